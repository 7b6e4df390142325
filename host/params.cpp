// SPDX-License-Identifier: MIT
#include "params.h"

#include <float.h>
#include <string.h>

namespace zelhost {

constexpr double min_scale = 1e-6;
constexpr double max_scale = 1e6;
constexpr double max_frame_rate = 1e6;
constexpr int max_capacity = 1000000;
constexpr int usual_removal = 10;

// Of the first release; later ones only append fields.
constexpr size_t first_size = sizeof(zel_host_params_t);

zel_host_params_t default_params()
{
    zel_host_params_t params = {};
    params.size = sizeof(params);
    params.scale = ZEL_HOST_AUTO;
    params.frame_rate = 0;
    params.min_confidence = ZEL_HOST_AUTO_CONFIDENCE;
    params.iou = 0.3F;
    params.euc = 1.0F;
    params.stable = 2;
    params.removal = ZEL_HOST_AUTO;
    params.steady = ZEL_HOST_AUTO;
    params.max_objects = 256;
    return params;
}

// Nothing of this holds for a NaN.
static bool within(double value, double low, double high)
{
    return value >= low && value <= high;
}

static const char* wrong_field(const zel_host_params_t* p)
{
    if (p->scale != ZEL_HOST_AUTO && !within(p->scale, min_scale, max_scale))
        return "scale";
    if (!within(p->frame_rate, 0, max_frame_rate))
        return "frame_rate";
    if (!within(static_cast<double>(p->min_confidence), -static_cast<double>(FLT_MAX), static_cast<double>(FLT_MAX)))
        return "min_confidence";
    if (!within(static_cast<double>(p->iou), 0, 1))
        return "iou";
    if (!within(static_cast<double>(p->euc), 0, 1))
        return "euc";
    if (p->stable < 1)
        return "stable";
    if (p->removal != ZEL_HOST_AUTO && p->removal < 1)
        return "removal";
    if (p->steady < ZEL_HOST_AUTO || p->steady > 1)
        return "steady";
    if (p->ignore_class < 0 || p->ignore_class > 1)
        return "ignore_class";
    if (p->coasted < 0 || p->coasted > 1)
        return "coasted";
    if (p->max_objects < 1 || p->max_objects > max_capacity)
        return "max_objects";
    return nullptr;
}

const char* read_params(const zel_host_params_t* given, zel_host_params_t* params)
{
    *params = default_params();
    if (!given)
        return nullptr;
    if (given->size < first_size || given->size > sizeof(*params))
        return "size";
    memcpy(params, given, given->size);
    params->size = sizeof(*params);
    return wrong_field(params);
}

int removal_of(const zel_host_params_t* params, int* reason)
{
    *reason = ZEL_HOST_FIXED;
    if (params->removal != ZEL_HOST_AUTO)
        return params->removal;
    *reason = ZEL_HOST_NO_RATE;
    if (!(params->frame_rate > 0))
        return usual_removal;
    *reason = ZEL_HOST_RATE;
    const int half = static_cast<int>(params->frame_rate + 1) / 2;  // a second's frames by 2, rounded
    return half < 1 ? 1 : half;
}

}  // namespace zelhost

void zel_host_params_init(zel_host_params_t* params, size_t size)
{
    zel_host_params_t defaults = zelhost::default_params();
    const size_t known = size < sizeof(defaults) ? size : sizeof(defaults);
    defaults.size = known;
    memcpy(params, &defaults, known);
}

const char* zel_host_params_check(const zel_host_params_t* params)
{
    zel_host_params_t read;
    return zelhost::read_params(params, &read);
}
