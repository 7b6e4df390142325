// SPDX-License-Identifier: MIT
//
// The filter cycle in Eigen: as a user writes it, with sizes known to the compiler or not, and as an expert writes it.
// Eigen's own product of small matrices packs its operands for a large one; an expert knows that lazyProduct() does not,
// and names every intermediate result, which would otherwise be computed once for each element that reads it.
#pragma once

#include <Eigen/Dense>

#include "model.h"

namespace bench {

template <int rows, int cols>
using fixed = Eigen::Matrix<float, rows, cols>;
template <int rows, int cols>
using dynamic = Eigen::MatrixXf;

template <int rows, int cols>
Eigen::MatrixXf matrix_of(const float (&values)[rows * cols])
{
    return Eigen::Map<const Eigen::Matrix<float, rows, cols, Eigen::RowMajor>>(values);
}

template <template <int, int> class M>
struct eigen_model {
    M<8, 8> A = matrix_of<8, 8>(model_A);
    M<4, 8> H = matrix_of<4, 8>(model_H);
    M<8, 8> Q = matrix_of<8, 8>(model_Q);
    M<4, 4> R = matrix_of<4, 4>(model_R);
};

template <template <int, int> class M>
struct eigen_filter {
    M<8, 1> x = M<8, 1>::Zero(8, 1);
    M<8, 1> x_pre = M<8, 1>::Zero(8, 1);
    M<8, 8> P = M<8, 8>::Zero(8, 8);
    M<8, 8> P_pre = M<8, 8>::Zero(8, 8);
};

template <template <int, int> class M>
[[gnu::noinline]] void user_cycle(const eigen_model<M>& m, eigen_filter<M>& f, const M<4, 1>& z)
{
    f.x_pre.noalias() = m.A * f.x;
    f.P_pre.noalias() = m.A * f.P * m.A.transpose();
    f.P_pre += m.Q;
    M<8, 4> PHt(8, 4);
    PHt.noalias() = f.P_pre * m.H.transpose();
    M<4, 4> S(4, 4);
    S.noalias() = m.H * PHt;
    S += m.R;
    M<8, 4> K(8, 4);
    K.noalias() = PHt * S.inverse();
    f.x = f.x_pre + K * (z - m.H * f.x_pre);
    f.P.noalias() = (M<8, 8>::Identity(8, 8) - K * m.H) * f.P_pre;
}

[[gnu::noinline]] inline void expert_cycle(const eigen_model<fixed>& m, eigen_filter<fixed>& f, const fixed<4, 1>& z)
{
    f.x_pre = m.A.lazyProduct(f.x);
    const fixed<8, 8> AP = m.A.lazyProduct(f.P);
    f.P_pre = AP.lazyProduct(m.A.transpose()) + m.Q;
    const fixed<8, 4> PHt = f.P_pre.lazyProduct(m.H.transpose());
    const fixed<4, 4> S = m.H.lazyProduct(PHt) + m.R;
    const fixed<4, 4> S_inverse = S.inverse();
    const fixed<8, 4> K = PHt.lazyProduct(S_inverse);
    const fixed<4, 1> y = z - m.H.lazyProduct(f.x_pre);
    f.x = f.x_pre + K.lazyProduct(y);
    const fixed<8, 8> I_KH = fixed<8, 8>::Identity() - K.lazyProduct(m.H);
    f.P = I_KH.lazyProduct(f.P_pre);
}

}  // namespace bench
