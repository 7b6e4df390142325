// SPDX-License-Identifier: MIT
//
// The linear assignment problem on a sparse graph: some rows and columns are joined by edges with weights, and each row
// and each column may take one edge. The edges taken have the largest sum of weights.
//
// Method: R. Jonker, A. Volgenant, "A shortest augmenting path algorithm for dense and sparse linear assignment
// problems" (1987). Rows or columns may remain free, so there is nothing to complete by a square matrix; a search
// never leaves the connected part of the graph that it began in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zeltrack {

struct edge {
    std::uint32_t row;
    std::uint32_t column;
    double weight;
};

class assignment {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    // For each row the index of the edge that it takes, or none; valid until the next call. The edges must be sorted by
    // row, at most one for a row and a column; those whose weight is not above 0 are never taken. Of solutions of equal
    // weight the same one is found each time. Memory grows with rows, columns and edges, and is kept for the next call.
    const std::vector<std::uint32_t>& solve(std::size_t rows, std::size_t columns, const edge* edges,
                                            std::size_t count);

private:
    struct reached {
        double distance;
        std::uint32_t column;
    };

    void prepare(std::size_t rows, std::size_t columns, std::size_t count);
    bool take_best(std::uint32_t row);
    void augment(std::uint32_t start);
    void scan(std::uint32_t row, double distance);
    void raise_prices(std::uint32_t start);
    void flip(std::uint32_t start);

    const edge* edges_ = nullptr;
    std::vector<std::uint32_t> first_;  // edge of each row, and one past the last
    std::vector<std::uint32_t> taken_;  // edge, by row
    std::vector<std::uint32_t> owner_;  // row, by column
    std::vector<double> row_price_;     // the dual variables, of costs that are the weights negated
    std::vector<double> column_price_;
    std::vector<std::uint32_t> waiting_;  // rows whose best column has gone to another row

    // one search
    std::vector<double> distance_;       // by column; infinite where not reached
    std::vector<std::uint32_t> parent_;  // edge over which a column was reached
    std::vector<reached> heap_;
    std::vector<std::uint32_t> touched_;  // columns reached
    std::vector<std::uint32_t> settled_;  // columns whose distance is final
    double end_distance_ = 0;
    std::uint32_t end_row_ = none;     // the path ends by leaving this row free,
    std::uint32_t end_column_ = none;  // or at this free column
};

}  // namespace zeltrack
