// SPDX-License-Identifier: MIT
#include "confidence.h"

#include <float.h>
#include <math.h>

#include <algorithm>

namespace zelhost {

constexpr uint64_t fewest = 30;         // confidences that make a threshold
constexpr uint64_t renewal = 25;        // after so many more, it is found anew
constexpr int bins = 64;                // between the least and the largest
constexpr float same_box = 0.5F;        // overlap at which a detection is seen again
constexpr int fewest_met = 20;          // on each side, before they are compared
constexpr int most_met = 20000;         // on both; then the older half of the weight goes
constexpr double as_persistent = 0.95;  // share of the strong ones' persistence at which weak ones are kept

void add_confidence(confidence_choice* choice, float confidence)
{
    choice->latest[choice->count % confidence_memory] = confidence;
    ++choice->count;
}

// --- Otsu's threshold ------------------------------------------------------------------------------------------------

// A cut after bin n of the lower class has the larger a variance between the classes, the larger the square of
// (mean of all - mean of the lower) * lower is beside lower * upper. In a gap without confidences it is the same
// everywhere, and the middle of the gap is meant.
static double best_cut(const int* counts, int total)
{
    int sum = 0;
    for (int n = 0; n < bins; ++n)
        sum += n * counts[n];
    float best = -1;
    int first = 0;
    int last = 0;
    int lower = 0;
    int lower_sum = 0;
    for (int n = 0; n < bins - 1; ++n) {
        lower += counts[n];
        lower_sum += n * counts[n];
        const auto apart = static_cast<float>(sum * lower - total * lower_sum);
        const float variance = apart * apart / static_cast<float>(lower * (total - lower));
        if (variance > best) {
            best = variance;
            first = n;
        }
        if (variance == best)
            last = n;
    }
    return static_cast<double>(first + last) / 2 + 1;
}

static void find_threshold(confidence_choice* choice)
{
    const int total = static_cast<int>(std::min<uint64_t>(choice->count, confidence_memory));
    float least = choice->latest[0];
    float most = choice->latest[0];
    for (int n = 1; n < total; ++n) {
        least = std::min(least, choice->latest[n]);
        most = std::max(most, choice->latest[n]);
    }
    choice->split_at = choice->count;
    choice->alike = least == most;
    if (choice->alike)
        return;
    // in double: the difference may be beyond a float
    const double width = (static_cast<double>(most) - static_cast<double>(least)) / bins;
    const double per_bin = 1 / width;
    int counts[bins] = {};
    for (int n = 0; n < total; ++n) {
        const double above = static_cast<double>(choice->latest[n]) - static_cast<double>(least);
        ++counts[std::min(static_cast<int>(above * per_bin), bins - 1)];
    }
    choice->threshold = static_cast<float>(static_cast<double>(least) + best_cut(counts, total) * width);
}

// --- who is seen again -----------------------------------------------------------------------------------------------

static void note_persistence(confidence_choice* choice, const frame_boxes* before)
{
    for (int n = 0; n < before->count; ++n) {
        const seen_box& box = before->boxes[n];
        persistence* side = box.confidence < choice->threshold ? &choice->weak : &choice->strong;
        ++side->met;
        side->again += box.overlap >= same_box;
    }
    if (choice->weak.met + choice->strong.met < most_met)
        return;
    for (persistence* side : {&choice->weak, &choice->strong}) {
        side->met /= 2;
        side->again /= 2;
    }
}

void split_confidences(confidence_choice* choice, const frame_boxes* before)
{
    if (choice->count < fewest)
        return;
    if (choice->split_at == 0 || choice->count - choice->split_at >= renewal)
        find_threshold(choice);
    if (!choice->alike)
        note_persistence(choice, before);
}

double seen_again(const persistence* side)
{
    return side->met < fewest_met ? -1 : static_cast<double>(side->again) / side->met;
}

// By so much few detections may miss the true share: half a standard error.
static double doubt(const persistence* side)
{
    constexpr double errors = 0.5;
    const double share = seen_again(side);
    return errors * sqrt(share * (1 - share) / side->met);
}

float least_confidence(const confidence_choice* choice, int* reason)
{
    const double weak = seen_again(&choice->weak);
    const double strong = seen_again(&choice->strong);
    if (choice->split_at > 0 && choice->alike)
        *reason = ZEL_HOST_ALIKE;
    else if (weak < 0 || strong < 0)
        *reason = ZEL_HOST_WAITING;
    else if (weak + doubt(&choice->weak) < as_persistent * strong)
        *reason = ZEL_HOST_CHOSEN;
    else
        *reason = ZEL_HOST_PERSISTENT;
    return *reason == ZEL_HOST_CHOSEN ? choice->threshold : -FLT_MAX;
}

}  // namespace zelhost
