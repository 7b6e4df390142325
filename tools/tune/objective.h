// SPDX-License-Identifier: MIT
//
// What a search maximizes: a weighted sum of figures, averaged over groups of sequences.
#pragma once

#include <string>
#include <vector>

#include "eval/figure_list.h"
#include "tune/trial.h"

namespace zeltrack {

// Ratios count in percent, as tables show them.
struct objective {
    struct term {
        double weight;
        const figure* of;
    };
    std::string text;  // as the user wrote it
    std::vector<term> terms;
};

// Reads "HOTA", "HOTA+IDF1" or "HOTA-0.01*IDSW"; returns "" or what is wrong.
std::string read_objective(const std::string& text, objective& result);

// A group counts as one, however many sequences it has: sequences of one camera, or one video by several detectors.
struct sequence_group {
    std::string name;
    std::vector<std::size_t> sequences;
};

// Each pattern, "PATTERN[,PATTERN...]" as a shell has them, makes a group of the sequences that are in none yet; the
// others are a group each. In the order of the sequences. A pattern that takes none is a failure.
std::vector<sequence_group> group_sequences(const std::vector<std::string>& names,
                                            const std::vector<std::string>& patterns);

// How good the trials are, for one way of asking.
class judge {
public:
    // Fails if the trials lack a figure. All is copied but the trials, which must outlive it.
    judge(const trial_set& trials, const objective& wanted, std::vector<sequence_group> groups);

    double of_sequence(const trial& tried, std::size_t sequence) const;
    double of_group(const trial& tried, std::size_t group) const;  // mean over its sequences
    double of_all(const trial& tried) const;                       // mean over groups

    const std::vector<sequence_group>& groups() const { return groups_; }

private:
    struct term {
        double weight;  // with percent
        std::size_t column;
    };
    std::vector<term> terms_;
    std::vector<sequence_group> groups_;
};

}  // namespace zeltrack
