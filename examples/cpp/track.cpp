// SPDX-License-Identifier: MIT
//
// A host in C++17: the handle in a std::unique_ptr, the rows in vectors. The same scene as the host in C, whose
// coordinates need no scale; those of a camera do, see c/adapter.c.
#include <zel/libzel.h>
#include <array>
#include <cstdio>
#include <memory>
#include <new>
#include <vector>

namespace {

using detection = std::array<float, 6>;  // class, smaller x, smaller y, larger x, larger y, score
using track = std::array<float, 8>;      // identifier, class, the corners, score, index of its detection or -1

class tracker {
public:
    explicit tracker(int capacity)
        : handle_(zel_tracker_create(320, 240, capacity, 1.0F, 0.3F, 3, 10, 0)),
          input_(static_cast<std::size_t>(capacity)),
          output_(input_.size())
    {
        if (!handle_)
            throw std::bad_alloc();
    }

    // Valid until the next call.
    const std::vector<track>& process(const std::vector<detection>& found)
    {
        std::size_t count = 0;
        for (; count < found.size() && count < input_.size(); ++count)
            input_[count] = found[count];
        if (count < input_.size())
            input_[count][0] = 0;  // ends the list
        output_.resize(input_.size());
        zel_tracker_process(handle_.get(), reinterpret_cast<float(*)[6]>(input_.data()),
                            reinterpret_cast<float(*)[8]>(output_.data()));
        std::size_t rows = 0;
        while (rows < output_.size() && output_[rows][0] > 0)
            ++rows;
        output_.resize(rows);
        return output_;
    }

private:
    struct release {
        void operator()(void* handle) const { zel_tracker_release(handle); }
    };
    std::unique_ptr<void, release> handle_;
    std::vector<detection> input_;
    std::vector<track> output_;
};

std::vector<detection> detect(int frame)
{
    const float x = 2.0F * static_cast<float>(frame);
    std::vector<detection> found;
    if (frame != 5 && frame != 6)
        found.push_back({1, x, 20, x + 10, 50, 0.9F});
    found.push_back({2, 200 - x, 60, 240 - x, 80, 0.8F});
    return found;
}

}  // namespace

int main()
{
    tracker objects(16);
    for (int frame = 1; frame <= 8; ++frame)
        for (const auto& [id, cls, left, top, right, bottom, score, index] : objects.process(detect(frame))) {
            std::printf("frame %d: object %.0f of class %.0f at %.2f %.2f %.2f %.2f, ", frame, id, cls, left, top,
                        right, bottom);
            if (index < 0)
                std::printf("not seen\n");
            else
                std::printf("detection %.0f, score %.2f\n", index, score);
        }
}
