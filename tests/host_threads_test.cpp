// SPDX-License-Identifier: MIT
//
// Several cameras in several threads of one process, for the thread sanitizer to watch: the kit keeps them apart.
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "host/host.h"

namespace {

// All that comes out of a stream whose objects move differently for each camera.
std::vector<float> watch(int camera)
{
    const std::unique_ptr<zel_host_t, decltype(&zel_host_release)> host(zel_host_create(nullptr), zel_host_release);
    std::vector<zel_host_detection_t> found(20);
    std::vector<zel_host_track_t> tracks(256);
    std::vector<float> seen;
    for (int n = 0; n < 300; ++n) {
        for (int k = 0; k < 20; ++k) {
            const auto x = static_cast<float>(60 * k + n * (camera + 1) % 50);
            const auto y = static_cast<float>(k * n % 90);
            found[static_cast<size_t>(k)] = {x, y, x + 40, y + 40, 0.9F, 0};
        }
        const int count = zel_host_process(host.get(), found.data(), 20, tracks.data(), 256);
        for (int t = 0; t < count; ++t)
            seen.insert(seen.end(), {static_cast<float>(tracks[static_cast<size_t>(t)].id),
                                     tracks[static_cast<size_t>(t)].x1, tracks[static_cast<size_t>(t)].y2});
    }
    return seen;
}

TEST(Threads, MayHaveACameraEach)
{
    std::vector<float> together[4];
    std::vector<std::thread> threads;
    for (int camera = 0; camera < 4; ++camera)
        threads.emplace_back([&together, camera] { together[camera] = watch(camera); });
    for (std::thread& thread : threads)
        thread.join();
    for (int camera = 0; camera < 4; ++camera) {
        EXPECT_FALSE(together[camera].empty());
        EXPECT_EQ(together[camera], watch(camera)) << camera;
    }
}

}  // namespace
