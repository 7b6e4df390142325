// SPDX-License-Identifier: MIT
//
// One predict and correct of a filter: of 8 states and 4 measurements the whole cycle, one filter over and over or many
// in turn, and its eleven matrix calls one by one; the whole cycle for other sizes.

#include <vector>

#include "bench.h"
#include "eigen_filter.h"

namespace bench {
namespace {

struct kalman_deleter {
    void operator()(zel_kalman_t* kalman) const { zel_kalman_release(kalman); }
};
using kalman = std::unique_ptr<zel_kalman_t, kalman_deleter>;

// The filters borrow the model, as those of a tracker do.
template <int ns, int nm>
class libzel_filters {
public:
    explicit libzel_filters(int count)
    {
        for (int n = 0; n < count; ++n)
            filters_.emplace_back(zel_kalman_create(ns, nm, 1, A_.get(), H_.get(), Q_.get(), R_.get()));
    }

    void operator()()
    {
        measure(step_++, nm, z_->data.f);
        zel_kalman_t* filter = filters_[next_].get();
        zel_kalman_predict(filter);
        zel_kalman_correct(filter, z_.get());
        next_ = next_ + 1 < filters_.size() ? next_ + 1 : 0;
    }

private:
    mat A_ = copy_of(model_of(ns, nm).A, ns, ns);
    mat H_ = copy_of(model_of(ns, nm).H, nm, ns);
    mat Q_ = copy_of(model_of(ns, nm).Q, ns, ns);
    mat R_ = copy_of(model_of(ns, nm).R, nm, nm);
    mat z_{zel_mat_create(nm, 1, ZEL_F32)};
    std::vector<kalman> filters_;
    std::size_t next_ = 0;
    int step_ = 0;
};

template <template <int, int> class M, int ns, int nm,
          void (*cycle)(const eigen_model<M, ns, nm>&, eigen_filter<M, ns, nm>&, const M<nm, 1>&)>
class eigen_filters {
public:
    explicit eigen_filters(int count) : filters_(static_cast<std::size_t>(count)) {}

    void operator()()
    {
        measure(step_++, nm, z_.data());
        cycle(model_, filters_[next_], z_);
        next_ = next_ + 1 < filters_.size() ? next_ + 1 : 0;
    }

private:
    eigen_model<M, ns, nm> model_;
    std::vector<eigen_filter<M, ns, nm>> filters_;
    M<nm, 1> z_{nm, 1};
    std::size_t next_ = 0;
    int step_ = 0;
};

template <int ns, int nm>
using user_filters = eigen_filters<fixed, ns, nm, user_cycle<fixed, ns, nm>>;
template <int ns, int nm>
using expert_filters = eigen_filters<fixed, ns, nm, expert_cycle<fixed, ns, nm>>;
template <int ns, int nm>
using dynamic_filters = eigen_filters<dynamic, ns, nm, user_cycle<dynamic, ns, nm>>;

template <typename Filters>
void add_filters(const std::string& section, const std::string& line, const std::string& column, int count)
{
    measure(cell(section, line, column), [=] { return Filters(count); });
}

// Without the expert, whose products of large matrices take the compiler minutes.
template <int ns, int nm>
void add_peers(const std::string& section, const std::string& line, int count)
{
    add_filters<libzel_filters<ns, nm>>(section, line, "libzel", count);
    add_filters<user_filters<ns, nm>>(section, line, "Eigen user", count);
    add_filters<dynamic_filters<ns, nm>>(section, line, "Eigen dynamic", count);
}

template <int ns, int nm, int... more>
void add_sizes()
{
    add_peers<ns, nm>("cycle by size", "ns = " + std::to_string(ns) + ", nm = " + std::to_string(nm), 1);
    if constexpr (sizeof...(more) > 0)
        add_sizes<more...>();
}

// --- the calls -------------------------------------------------------------------------------------------------------

// The matrices of one filter, filled so that every call has ordinary numbers to work on.
struct libzel_parts {
    mat A = copy_of(model_A, 8, 8), H = copy_of(model_H, 4, 8), Q = copy_of(model_Q, 8, 8), R = copy_of(model_R, 4, 4);
    mat x = copy_of(model_A, 8, 1), x_pre = copy_of(model_A, 8, 1), z = copy_of(model_A, 4, 1);
    mat P = copy_of(model_Q, 8, 8), P_pre = copy_of(model_Q, 8, 8), t1 = copy_of(model_Q, 8, 8);
    mat t2 = copy_of(model_H, 8, 4), K = copy_of(model_H, 8, 4);
    mat t3 = copy_of(model_R, 4, 4), t4 = copy_of(model_R, 4, 4), t5 = copy_of(model_A, 4, 1);
};

struct eigen_parts {
    eigen_model<fixed, 8, 4> m;
    eigen_filter<fixed, 8, 4> f;
    fixed<8, 8> t1 = m.Q;
    fixed<8, 4> t2 = m.H.transpose(), K = t2;
    fixed<4, 4> t3 = m.R, t4 = m.R;
    fixed<4, 1> t5 = m.A.topLeftCorner<4, 1>(), z = t5;
};

template <typename Parts, typename F>
void add_part(const std::string& line, const std::string& column, F call)
{
    measure(cell("call of the cycle", line, column), [call] { return [call, p = Parts()]() mutable { call(p); }; });
}

template <typename F, typename G, typename H>
void add_call(const std::string& line, F call, G user, H expert)
{
    add_part<libzel_parts>(line, "libzel", call);
    add_part<eigen_parts>(line, "Eigen user", user);
    add_part<eigen_parts>(line, "Eigen expert", expert);
}

}  // namespace

void add_cycles()
{
    for (const int count : {1, 100, 1000}) {
        const std::string line = std::to_string(count) + (count > 1 ? " filters in turn" : " filter");
        add_peers<8, 4>("cycle", line, count);
        add_filters<expert_filters<8, 4>>("cycle", line, "Eigen expert", count);
    }
    add_sizes<2, 1, 4, 2, 6, 2, 6, 3, 7, 4, 8, 4, 9, 3, 10, 4, 12, 6, 15, 6, 16, 8, 20, 10, 24, 8>();
}

void add_user_cycles(const std::string& section, const std::string& line, int n)
{
    measure(cell(section, line, "N Eigen cycles"), [n] {
        return [n, cycle = user_filters<8, 4>(1)]() mutable {
            for (int i = 0; i < n; ++i)
                cycle();
        };
    });
}

void add_calls()
{
    using L = libzel_parts;
    using E = eigen_parts;
    constexpr int t = ZEL_MAT_TRANS_SRC2;
    add_call(
        " 1  x- = A x", [](L& p) { zel_mat_mul(p.A.get(), p.x.get(), p.x_pre.get(), 0); },
        [](E& e) { e.f.x_pre.noalias() = e.m.A * e.f.x; }, [](E& e) { e.f.x_pre = e.m.A.lazyProduct(e.f.x); });
    add_call(
        " 2  T = A P'", [](L& p) { zel_mat_mul(p.A.get(), p.P.get(), p.t1.get(), t); },
        [](E& e) { e.t1.noalias() = e.m.A * e.f.P; }, [](E& e) { e.t1 = e.m.A.lazyProduct(e.f.P); });
    add_call(
        " 3  P- = T A' + Q", [](L& p) { zel_mat_muladd(p.t1.get(), p.A.get(), p.Q.get(), p.P_pre.get(), t); },
        [](E& e) { (e.f.P_pre.noalias() = e.t1 * e.m.A.transpose()) += e.m.Q; },
        [](E& e) { e.f.P_pre = e.t1.lazyProduct(e.m.A.transpose()) + e.m.Q; });
    add_call(
        " 4  B = P- H'", [](L& p) { zel_mat_mul(p.P_pre.get(), p.H.get(), p.t2.get(), t); },
        [](E& e) { e.t2.noalias() = e.f.P_pre * e.m.H.transpose(); },
        [](E& e) { e.t2 = e.f.P_pre.lazyProduct(e.m.H.transpose()); });
    add_call(
        " 5  S = H B + R", [](L& p) { zel_mat_muladd(p.H.get(), p.t2.get(), p.R.get(), p.t3.get(), 0); },
        [](E& e) { (e.t3.noalias() = e.m.H * e.t2) += e.m.R; }, [](E& e) { e.t3 = e.m.H.lazyProduct(e.t2) + e.m.R; });
    add_call(
        " 6  C = S^-1", [](L& p) { zel_mat_inv(p.t3.get(), p.t4.get()); }, [](E& e) { e.t4 = e.t3.inverse(); },
        [](E& e) { e.t4 = e.t3.inverse(); });
    add_call(
        " 7  K = B C'", [](L& p) { zel_mat_mul(p.t2.get(), p.t4.get(), p.K.get(), t); },
        [](E& e) { e.K.noalias() = e.t2 * e.t4; }, [](E& e) { e.K = e.t2.lazyProduct(e.t4); });
    add_call(
        " 8  y = z - H x-", [](L& p) { zel_mat_submul(p.z.get(), p.H.get(), p.x_pre.get(), p.t5.get(), 0); },
        [](E& e) { e.t5 = e.z - e.m.H * e.f.x_pre; }, [](E& e) { e.t5 = e.z - e.m.H.lazyProduct(e.f.x_pre); });
    add_call(
        " 9  x = K y + x-", [](L& p) { zel_mat_muladd(p.K.get(), p.t5.get(), p.x_pre.get(), p.x.get(), 0); },
        [](E& e) { e.f.x = e.f.x_pre + e.K * e.t5; }, [](E& e) { e.f.x = e.f.x_pre + e.K.lazyProduct(e.t5); });
    add_call(
        "10  T = I - K H",
        [](L& p) { zel_mat_submul(nullptr, p.K.get(), p.H.get(), p.t1.get(), ZEL_MAT_FROM_IDENTITY); },
        [](E& e) { e.t1 = fixed<8, 8>::Identity() - e.K * e.m.H; },
        [](E& e) { e.t1 = fixed<8, 8>::Identity() - e.K.lazyProduct(e.m.H); });
    add_call(
        "11  P = T P-'", [](L& p) { zel_mat_mul(p.t1.get(), p.P_pre.get(), p.P.get(), t); },
        [](E& e) { e.f.P.noalias() = e.t1 * e.f.P_pre; }, [](E& e) { e.f.P = e.t1.lazyProduct(e.f.P_pre); });
}

}  // namespace bench
