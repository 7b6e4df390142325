// SPDX-License-Identifier: MIT
//
// The rows of a file, and what a seqinfo.ini near it adds.
#include <algorithm>
#include <filesystem>

#include "mot/load.h"
#include "mot/seqinfo.h"
#include "track/sequence.h"

namespace zeltrack {

// Beside the file or, as SEQ/det/det.txt has it, one folder up.
static std::string info_of(const std::string& detections)
{
    namespace fs = std::filesystem;
    if (detections == "-")
        return "";
    std::error_code ignored;
    const fs::path folder = fs::absolute(detections, ignored).parent_path();
    for (const fs::path& place : {folder, folder.parent_path()})
        if (fs::is_regular_file(place / "seqinfo.ini", ignored))
            return (place / "seqinfo.ini").string();
    return "";
}

sequence load_sequence(const track_options& options)
{
    sequence loaded;
    loaded.rows = load_detections(options.detections, options.layout);
    if (!loaded.rows.empty())
        loaded.frames = loaded.rows.back().frame;
    loaded.fps = options.fps;
    loaded.info = info_of(options.detections);
    if (loaded.info.empty())
        return loaded;
    const sequence_info info = load_sequence_info(loaded.info);
    loaded.frames = std::max(loaded.frames, info.frames);
    if (!(loaded.fps > 0))
        loaded.fps = info.frame_rate;
    return loaded;
}

}  // namespace zeltrack
