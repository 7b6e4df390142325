// SPDX-License-Identifier: MIT
//
// Which files belong together: those of one sequence have its name, in the folder of the truth and in each of tracks or
// of detections.
#pragma once

#include <string>
#include <vector>

namespace zeltrack {

struct sequence_files {
    std::string name;
    std::string truth;
    std::string info;                 // its seqinfo.ini; empty if there is none
    std::vector<std::string> tracks;  // one for each set of tracks
};

struct pairing {
    std::vector<sequence_files> sequences;  // by name
    std::vector<std::string> trackers;      // what the sets of tracks are called; all differ
    std::vector<std::string> missing;       // what has no partner, as text
};

// What the sequence of a file of truth is called: SEQ of SEQ.txt, SEQ/gt.txt or SEQ/gt/gt.txt.
std::string sequence_name(const std::string& truth);

// What the folders beside the truth hold: tracks, SEQ.txt; or detections, SEQ.txt, SEQ/det.txt or SEQ/det/det.txt.
enum class paired_kind { tracks, detections };

// Two files, or a folder of truth and folders of tracks. In the first, sequence SEQ is SEQ.txt, SEQ/gt.txt or
// SEQ/gt/gt.txt; in the others it is what their kind says. What does not exist or is something else is a failure.
pairing pair_files(const std::string& truth, const std::vector<std::string>& tracks,
                   paired_kind kind = paired_kind::tracks);

// What has no partner is a failure unless it is to be left out, which a note on standard error tells; nothing that has
// one is a failure, too. `other` is what the truth must have a partner in.
void refuse_missing(const pairing& pairs, bool skip, bool quiet, const std::string& other);

}  // namespace zeltrack
