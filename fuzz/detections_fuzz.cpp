// SPDX-License-Identifier: MIT
//
// The reader of detection files. Every row that it takes must be fit for the tracker, and must read back as
// the same row after it was written. The first two bytes choose where it finds the class and what counts from 0.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <sstream>

#include "mot/mot.h"
#include "require.h"

namespace {

using zeltrack::mot_row;
using rows = std::vector<mot_row>;

bool within(float value, float limit)
{
    return std::fabs(value) <= limit;  // no NaN is
}

void require_valid(const mot_row& row)
{
    require(row.frame >= 1 && row.frame <= zeltrack::max_frame, "frame within its limits");
    for (const float value : {row.left, row.top, row.width, row.height})
        require(within(value, zeltrack::max_coordinate), "box within its limits");
    require(within(row.conf, std::numeric_limits<float>::max()), "finite confidence");
    require(row.cls != 0 && within(row.cls, zeltrack::max_class), "class that ends no list");
}

void require_same(const mot_row& a, const mot_row& b)
{
    require(a.frame == b.frame, "written numbers read back");
    require(a.left == b.left && a.top == b.top && a.width == b.width && a.height == b.height && a.conf == b.conf,
            "written floats read back");
}

void require_rereadable(const rows& taken, int frame_base)
{
    std::string text;
    for (const mot_row& row : taken)
        append_row(text, row, frame_base);
    std::istringstream in(text);
    rows again;
    const auto wrong = read_detections(in, {0, 1, frame_base}, again);
    require(!wrong && again.size() == taken.size(), "written rows read back");
    for (std::size_t n = 0; n < taken.size(); ++n)
        require_same(taken[n], again[n]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const zeltrack::mot_layout layout = {data[0] % 16, data[1] % 2, data[1] / 2 % 2};
    const std::string text(data + 2, data + size);
    std::istringstream in(text);
    rows taken;
    const auto wrong = read_detections(in, layout, taken);
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    require(taken.size() <= lines, "at most a row for each line");
    if (wrong)
        require(wrong->line >= 1 && wrong->line <= lines && !wrong->text.empty(), "an error names its line");
    for (const mot_row& row : taken)
        require_valid(row);
    require_rereadable(taken, layout.frame_base);
    return 0;
}
