// SPDX-License-Identifier: MIT
//
// The filter cycle in Eigen: as a user writes it, with sizes known to the compiler or not, and as an expert writes it.
// Eigen's own product of small matrices packs its operands for a large one; an expert knows that lazyProduct() does
// not, and names every intermediate result, which would otherwise be computed once for each element that reads it.
#pragma once

#include <Eigen/Dense>

#include "model.h"

namespace bench {

template <int rows, int cols>
using fixed = Eigen::Matrix<float, rows, cols>;
template <int rows, int cols>
using dynamic = Eigen::MatrixXf;

inline Eigen::MatrixXf matrix_of(const float* values, int rows, int cols)
{
    return Eigen::Map<const Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>>(values, rows, cols);
}

template <template <int, int> class M, int ns, int nm>
struct eigen_model {
    M<ns, ns> A = matrix_of(model_of(ns, nm).A, ns, ns);
    M<nm, ns> H = matrix_of(model_of(ns, nm).H, nm, ns);
    M<ns, ns> Q = matrix_of(model_of(ns, nm).Q, ns, ns);
    M<nm, nm> R = matrix_of(model_of(ns, nm).R, nm, nm);
};

template <template <int, int> class M, int ns, int nm>
struct eigen_filter {
    M<ns, 1> x = M<ns, 1>::Zero(ns, 1);
    M<ns, 1> x_pre = M<ns, 1>::Zero(ns, 1);
    M<ns, ns> P = M<ns, ns>::Zero(ns, ns);
    M<ns, ns> P_pre = M<ns, ns>::Zero(ns, ns);
};

template <template <int, int> class M, int ns, int nm>
[[gnu::noinline]] void user_cycle(const eigen_model<M, ns, nm>& m, eigen_filter<M, ns, nm>& f, const M<nm, 1>& z)
{
    f.x_pre.noalias() = m.A * f.x;
    f.P_pre.noalias() = m.A * f.P * m.A.transpose();
    f.P_pre += m.Q;
    M<ns, nm> PHt(ns, nm);
    PHt.noalias() = f.P_pre * m.H.transpose();
    M<nm, nm> S(nm, nm);
    S.noalias() = m.H * PHt;
    S += m.R;
    M<ns, nm> K(ns, nm);
    K.noalias() = PHt * S.inverse();
    f.x = f.x_pre + K * (z - m.H * f.x_pre);
    f.P.noalias() = (M<ns, ns>::Identity(ns, ns) - K * m.H) * f.P_pre;
}

template <template <int, int> class M, int ns, int nm>
[[gnu::noinline]] void expert_cycle(const eigen_model<M, ns, nm>& m, eigen_filter<M, ns, nm>& f, const M<nm, 1>& z)
{
    f.x_pre = m.A.lazyProduct(f.x);
    const M<ns, ns> AP = m.A.lazyProduct(f.P);
    f.P_pre = AP.lazyProduct(m.A.transpose()) + m.Q;
    const M<ns, nm> PHt = f.P_pre.lazyProduct(m.H.transpose());
    const M<nm, nm> S = m.H.lazyProduct(PHt) + m.R;
    const M<nm, nm> S_inverse = S.inverse();
    const M<ns, nm> K = PHt.lazyProduct(S_inverse);
    const M<nm, 1> y = z - m.H.lazyProduct(f.x_pre);
    f.x = f.x_pre + K.lazyProduct(y);
    const M<ns, ns> I_KH = M<ns, ns>::Identity(ns, ns) - K.lazyProduct(m.H);
    f.P = I_KH.lazyProduct(f.P_pre);
}

}  // namespace bench
