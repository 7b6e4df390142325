// SPDX-License-Identifier: MIT
//
// What the element zeltracker takes for a buffer, in turn with the host kit's call for the same detections: 16 streams
// with a harness and a handle each, in one thread. GST_PLUGIN_PATH must name the plugin's directory.
#include <gst/check/gstharness.h>
#include <gst/video/gstvideometa.h>
#include <zel/host.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

constexpr int streams = 16;
constexpr int frames = 300;
constexpr int settled = 30;  // frames before which nothing is counted
constexpr double width = 1920;
constexpr double height = 1080;
constexpr char caps[] = "video/x-raw,format=GRAY8,width=1920,height=1080,framerate=30/1";

using samples = std::vector<double>;
using detections = std::vector<zel_host_detection_t>;

}  // namespace

static double median(samples& all)
{
    std::nth_element(all.begin(), all.begin() + all.size() / 2, all.end());
    return all[all.size() / 2];
}

template <typename Work>
static double microseconds(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

// Boxes in rows of ten that move to the right.
static detections scene(int boxes, int frame, int stream)
{
    detections found;
    for (int n = 0; n < boxes; ++n) {
        const auto x = static_cast<float>(frame % 200 * 2 + n % 10 * 180 + stream);
        const auto y = static_cast<float>(n / 10 * 100);
        found.push_back({x, y, x + 60, y + 80, 0.9F, 0});
    }
    return found;
}

static GstBuffer* buffer_of(const detections& found)
{
    GstBuffer* buffer = gst_buffer_new();
    for (const zel_host_detection_t& it : found) {
        auto* region = gst_buffer_add_video_region_of_interest_meta(buffer, "person", static_cast<guint>(it.x1),
                                                                    static_cast<guint>(it.y1), 60, 80);
        gst_video_region_of_interest_meta_add_param(
            region, gst_structure_new("detection", "label_id", G_TYPE_INT, it.class_id, "confidence", G_TYPE_DOUBLE,
                                      0.9, "x_min", G_TYPE_DOUBLE, static_cast<double>(it.x1) / width, "x_max",
                                      G_TYPE_DOUBLE, static_cast<double>(it.x2) / width, "y_min", G_TYPE_DOUBLE,
                                      static_cast<double>(it.y1) / height, "y_max", G_TYPE_DOUBLE,
                                      static_cast<double>(it.y2) / height, nullptr));
    }
    return buffer;
}

static double push(GstHarness* harness, GstBuffer* buffer)
{
    const double time = microseconds([&] { gst_harness_push(harness, buffer); });
    gst_buffer_unref(gst_harness_pull(harness));
    return time;
}

static GstHarness* harness_of(const char* element)
{
    GstHarness* harness = gst_harness_new(element);
    gst_harness_set_src_caps_str(harness, caps);
    return harness;
}

static void compare(int boxes)
{
    samples kit;
    samples element;
    samples nothing;
    GstHarness* identity = harness_of("identity");
    std::vector<zel_host_track_t> tracks(256);
    std::vector<GstHarness*> harnesses;
    std::vector<zel_host_t*> hosts;
    for (int n = 0; n < streams; ++n) {
        harnesses.push_back(harness_of("zeltracker"));
        hosts.push_back(zel_host_create(nullptr));
    }
    for (int frame = 0; frame < frames; ++frame) {
        for (int n = 0; n < streams; ++n) {
            const detections found = scene(boxes, frame, n);
            GstBuffer* buffer = buffer_of(found);
            const auto index = static_cast<std::size_t>(n);
            const double alone =
                microseconds([&] { zel_host_process(hosts[index], found.data(), boxes, tracks.data(), 256); });
            const double pushed = push(harnesses[index], buffer);
            const double passed = push(identity, gst_buffer_new());
            if (frame < settled)
                continue;
            kit.push_back(alone);
            element.push_back(pushed);
            nothing.push_back(passed);
        }
    }
    const double taken = median(element) - median(nothing);
    printf("%5d %10.1f us %10.1f us\n", boxes, median(kit), taken);
    for (int n = 0; n < streams; ++n) {
        gst_harness_teardown(harnesses[static_cast<std::size_t>(n)]);
        zel_host_release(hosts[static_cast<std::size_t>(n)]);
    }
    gst_harness_teardown(identity);
}

int main(int argc, char** argv)
{
    gst_init(&argc, &argv);
    printf("boxes           kit    zeltracker\n");
    for (const int boxes : {5, 10, 20, 50, 100})
        compare(boxes);
    return 0;
}
