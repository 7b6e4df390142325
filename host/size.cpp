// SPDX-License-Identifier: MIT
#include "size.h"

#include <float.h>
#include <limits.h>
#include <string.h>

#include <algorithm>

namespace zelhost {

// The tracker's gate: a detection further than this from a prediction is not compared with it.
constexpr double gate = 10;
constexpr double misled = 3;

static int known(const scale_choice* choice)
{
    return std::min(choice->count, size_memory);
}

static double median_size(const scale_choice* choice)
{
    float sizes[size_memory];
    const int count = known(choice);
    if (count == 0)
        return 0;
    memcpy(sizes, choice->sizes, static_cast<size_t>(count) * sizeof(float));
    float* const middle = sizes + count / 2;
    std::nth_element(sizes, middle, sizes + count);
    const auto upper = static_cast<double>(*middle);
    return count % 2 == 1 ? upper : (upper + static_cast<double>(*std::max_element(sizes, middle))) / 2;
}

void add_size(scale_choice* choice, double size)
{
    const auto stored = static_cast<float>(std::min(size, static_cast<double>(FLT_MAX)));
    if (!(stored > 0))
        return;
    choice->sizes[choice->count % size_memory] = stored;
    // from the end of the range back to a number that leaves the order of the places
    choice->count = choice->count < INT_MAX ? choice->count + 1 : INT_MAX / size_memory * size_memory;
}

void choose_scale(scale_choice* choice, double wanted)
{
    if (choice->frozen)
        return;
    choice->scale = wanted > 0 ? wanted : 0;
    if (choice->count == 0)
        return;
    choice->frozen = true;
    if (wanted > 0)
        return;
    choice->first_size = median_size(choice);
    choice->scale = std::clamp(gate / choice->first_size, 1e-6, 1e6);
}

void describe_scale(const scale_choice* choice, zel_host_status_t* status)
{
    status->scale = choice->scale;
    status->first_size = choice->first_size;
    status->typical_size = median_size(choice);
    const double ratio = choice->first_size > 0 ? status->typical_size / choice->first_size : 1;
    status->scale_misled = ratio > misled || ratio < 1 / misled;
    status->scale_reason = choice->first_size > 0 ? ZEL_HOST_CHOSEN
                           : choice->scale > 0    ? ZEL_HOST_FIXED
                                                  : ZEL_HOST_WAITING;
}

}  // namespace zelhost
