// SPDX-License-Identifier: MIT
//
// The same in OpenCV, on one thread. Built only where its headers are found. Its filter solves for the gain by a
// singular value decomposition.

#include <opencv2/video/tracking.hpp>
#include <vector>

#include "bench.h"
#include "model.h"

namespace bench {
namespace {

cv::Mat copy(const float* values, int rows, int cols)
{
    return cv::Mat(rows, cols, CV_32F, const_cast<float*>(values)).clone();
}

cv::Mat random_cv(int n)
{
    cv::Mat m(n, n, CV_32F);
    cv::randu(m, -1, 1);
    return m;
}

cv::KalmanFilter filter_of_model()
{
    cv::KalmanFilter filter(8, 4, 0, CV_32F);
    filter.transitionMatrix = copy(model_A, 8, 8);
    filter.measurementMatrix = copy(model_H, 4, 8);
    filter.processNoiseCov = copy(model_Q, 8, 8);
    filter.measurementNoiseCov = copy(model_R, 4, 4);
    return filter;
}

void add_filters(int count)
{
    const std::string line = std::to_string(count) + (count > 1 ? " filters in turn" : " filter");
    measure(cell("cycle", line, "OpenCV"), [count] {
        std::vector<cv::KalmanFilter> filters;
        filters.reserve(static_cast<std::size_t>(count));
        for (int n = 0; n < count; ++n)
            filters.push_back(filter_of_model());
        return [filters, next = std::size_t{0}, step = 0]() mutable {
            float box[4];
            measure(step++, 4, box);
            filters[next].predict();
            filters[next].correct(cv::Mat(4, 1, CV_32F, box));
            next = next + 1 < filters.size() ? next + 1 : 0;
        };
    });
}

template <typename F>
void add_operation(const std::string& section, const std::string& line, int n, F call)
{
    measure(cell(section, line, "OpenCV"),
            [=] { return [call, a = random_cv(n), b = random_cv(n), d = random_cv(n)]() mutable { call(a, b, d); }; });
}

template <typename F>
void add_elementwise(const std::string& line, F call)
{
    measure(cell(elementwise, line, "OpenCV"), [=] {
        const auto operand = [o = elementwise_operands()](int n) {
            return cv::Mat(elementwise_size, elementwise_size, CV_32F, o[n]);
        };
        return [call, a = operand(0), b = operand(1), d = operand(2)]() mutable { call(a, b, d); };
    });
}

}  // namespace

void add_opencv()
{
    using M = cv::Mat;
    cv::setNumThreads(1);
    for (const int count : {1, 100, 1000})
        add_filters(count);
    for (int n = 8; n <= 128; n += 4)
        add_operation("product of n x n f32", "n = " + std::to_string(n), n,
                      [](const M& a, const M& b, M& d) { cv::gemm(a, b, 1, M(), 0, d); });
    for (const int n : {8, 64, 512})
        add_operation("transpose of n x n f32", "n = " + std::to_string(n), n,
                      [](const M& a, const M&, M& d) { cv::transpose(a, d); });
    add_elementwise("d = a + b", [](const M& a, const M& b, M& d) { cv::add(a, b, d); });
    add_elementwise("d = a - b", [](const M& a, const M& b, M& d) { cv::subtract(a, b, d); });
    add_elementwise("d = 3 a", [](const M& a, const M&, M& d) { a.convertTo(d, CV_32F, 3); });
    add_elementwise("d = -a", [](const M& a, const M&, M& d) { a.convertTo(d, CV_32F, -1); });
    add_operation("inverse of n x n f32", "n = 4", 4, [](const M& a, const M&, M& d) { cv::invert(a, d); });
}

}  // namespace bench
