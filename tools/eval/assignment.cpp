// SPDX-License-Identifier: MIT
//
// Shortest augmenting paths from the rows that a greedy start leaves over, each found as Dijkstra's algorithm does with
// reduced costs. Each row could also take a place of its own at no cost: that is how it remains free.
#include "eval/assignment.h"

#include <algorithm>
#include <limits>

namespace zeltrack {

static constexpr double infinite = std::numeric_limits<double>::infinity();

void assignment::prepare(std::size_t rows, std::size_t columns, std::size_t count)
{
    first_.assign(rows + 1, 0);
    for (std::size_t e = 0; e < count; ++e)
        ++first_[edges_[e].row + 1];
    for (std::size_t r = 0; r < rows; ++r)
        first_[r + 1] += first_[r];
    taken_.assign(rows, none);
    owner_.assign(columns, none);
    row_price_.assign(rows, 0);
    column_price_.assign(columns, 0);
    distance_.assign(columns, infinite);
    parent_.resize(columns);
    waiting_.clear();
}

// False if another row has the column.
bool assignment::take_best(std::uint32_t row)
{
    std::uint32_t best = none;
    double weight = 0;
    for (std::uint32_t e = first_[row]; e < first_[row + 1]; ++e)
        if (edges_[e].weight > weight) {
            best = e;
            weight = edges_[e].weight;
        }
    row_price_[row] = -weight;
    if (best == none)
        return true;
    std::uint32_t& owner = owner_[edges_[best].column];
    if (owner != none)
        return false;
    owner = row;
    taken_[row] = best;
    return true;
}

static bool farther(double a, std::uint32_t a_column, double b, std::uint32_t b_column)
{
    return a != b ? a > b : a_column > b_column;
}

// Goes on from a row at this distance: to a place of its own, or over its edges.
void assignment::scan(std::uint32_t row, double distance)
{
    const auto later = [](const reached& a, const reached& b) {
        return farther(a.distance, a.column, b.distance, b.column);
    };
    const double free_distance = distance - row_price_[row];
    if (free_distance < end_distance_) {
        end_distance_ = free_distance;
        end_row_ = row;
    }
    for (std::uint32_t e = first_[row]; e < first_[row + 1]; ++e) {
        const auto [r, column, weight] = edges_[e];
        const double reduced = -weight - row_price_[row] - column_price_[column];
        const double far = distance + std::max(reduced, 0.0);  // below 0 by rounding only
        if (!(weight > 0) || far >= end_distance_ || far >= distance_[column])
            continue;
        if (distance_[column] == infinite)
            touched_.push_back(column);
        distance_[column] = far;
        parent_[column] = e;
        heap_.push_back({far, column});
        std::push_heap(heap_.begin(), heap_.end(), later);
    }
}

// Keeps every reduced cost at 0 or more, and those of the edges taken at 0.
void assignment::raise_prices(std::uint32_t start)
{
    row_price_[start] += end_distance_;
    for (const std::uint32_t column : settled_) {
        const double rise = end_distance_ - distance_[column];
        row_price_[owner_[column]] += rise;
        column_price_[column] -= rise;
    }
}

// Along the path back to its start each row passes its column on and takes the one before.
void assignment::flip(std::uint32_t start)
{
    std::uint32_t column = end_column_;
    if (end_row_ != none) {
        if (end_row_ == start)
            return;
        column = edges_[taken_[end_row_]].column;
        taken_[end_row_] = none;
    }
    for (;;) {
        const std::uint32_t e = parent_[column];
        const std::uint32_t row = edges_[e].row;
        const std::uint32_t passed_on = taken_[row];
        taken_[row] = e;
        owner_[column] = row;
        if (row == start)
            return;
        column = edges_[passed_on].column;
    }
}

void assignment::augment(std::uint32_t start)
{
    const auto later = [](const reached& a, const reached& b) {
        return farther(a.distance, a.column, b.distance, b.column);
    };
    heap_.clear();
    touched_.clear();
    settled_.clear();
    end_distance_ = infinite;
    end_row_ = end_column_ = none;
    scan(start, 0);
    while (!heap_.empty() && heap_.front().distance < end_distance_) {
        const auto [distance, column] = heap_.front();
        std::pop_heap(heap_.begin(), heap_.end(), later);
        heap_.pop_back();
        if (distance > distance_[column])
            continue;  // reached by a shorter way since
        if (owner_[column] == none) {
            end_distance_ = distance;
            end_column_ = column;
            end_row_ = none;
            break;
        }
        settled_.push_back(column);
        scan(owner_[column], distance);
    }
    raise_prices(start);
    flip(start);
    for (const std::uint32_t column : touched_)
        distance_[column] = infinite;
}

const std::vector<std::uint32_t>& assignment::solve(std::size_t rows, std::size_t columns, const edge* edges,
                                                    std::size_t count)
{
    edges_ = edges;
    prepare(rows, columns, count);
    for (std::uint32_t row = 0; row < rows; ++row)
        if (!take_best(row))
            waiting_.push_back(row);
    for (const std::uint32_t row : waiting_)
        augment(row);
    return taken_;
}

}  // namespace zeltrack
