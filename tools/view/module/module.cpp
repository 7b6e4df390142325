// SPDX-License-Identifier: MIT
//
// The tracker within the page: what WebAssembly exports to page/worker.mjs. It is made of the command's own sources, so
// that a run in the page is the run of the command, bit for bit. One thread; memory that a function hands out is the
// module's and stays valid until the same function is called again.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "view/run.h"

namespace {

using namespace zeltrack;

static_assert(sizeof(mot_row) == 32, "the layout that worker.mjs fills");

sequence file;
std::optional<true_boxes> truth;
std::string result;

// In the order of PARAMETERS in worker.mjs.
struct parameters {
    double scale, euc, iou, stable, removal, min_conf, max_objects, ignore_class, steady;
};
parameters chosen;

track_options options_of(const parameters& p)
{
    track_options o;
    o.scale = p.scale > 0 ? p.scale : ZEL_HOST_AUTO;
    o.euc = static_cast<float>(p.euc);
    o.iou = static_cast<float>(p.iou);
    o.stable = static_cast<int>(p.stable);
    o.removal = static_cast<int>(p.removal);
    o.min_conf = static_cast<float>(p.min_conf);
    o.max_objects = static_cast<int>(p.max_objects);
    o.ignore_class = p.ignore_class != 0;
    o.steady = static_cast<int>(p.steady);
    return o;
}

}  // namespace

extern "C" {

// Room for all rows of the file, by frame.
mot_row* input_rows(std::size_t count, int frames)
{
    file.frames = frames;
    file.rows.assign(count, {});
    return file.rows.data();
}

// The same for the ground truth; without a call there is none.
mot_row* truth_rows(std::size_t count)
{
    truth.emplace();
    truth->counted.resize(count);
    return truth->counted.data();
}

// After truth_rows(), and in the same order: boxes that may claim a track without counting.
mot_row* other_rows(std::size_t count)
{
    truth->others.resize(count);
    return truth->others.data();
}

parameters* parameter_values()
{
    return &chosen;
}

// Tracks all frames; the size of the package that result_bytes() holds then.
std::size_t run()
{
    const track_options options = options_of(chosen);
    package out;
    pack_tracked(out, {file, truth ? &*truth : nullptr}, options, [](int) {});
    result = out.bytes();
    return result.size();
}

// The same for the figures alone.
std::size_t figures()
{
    const track_options options = options_of(chosen);
    package out;
    pack_figures_only(out, {file, truth ? &*truth : nullptr}, options);
    result = out.bytes();
    return result.size();
}

const char* result_bytes()
{
    return result.data();
}

}  // extern "C"
