// SPDX-License-Identifier: MIT
//
// The bar is redrawn ten times a second and wiped at the end with blanks, which even the plainest terminal understands.
#include "cli/progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace zeltrack {

static constexpr std::chrono::milliseconds patience{500};
static constexpr std::chrono::milliseconds between{100};
static constexpr int cells = 40;

progress::progress(bool wanted, std::string what, int total)
    : active_(wanted && isatty(STDERR_FILENO) == 1),
      what_(std::move(what)),
      total_(total),
      next_(clock::now() + patience)
{
}

progress::~progress()
{
    if (drawn_)
        std::fprintf(stderr, "\r%*s\r", cells + 36, "");
}

void progress::update(int done)
{
    if (!active_ || clock::now() < next_)
        return;
    next_ = clock::now() + between;
    drawn_ = true;
    const double share = static_cast<double>(done) / total_;
    const int filled = static_cast<int>(share * cells);
    const std::string bar(static_cast<std::size_t>(filled), '#');
    std::fprintf(stderr, "\r[%-*s] %3.0f %%  %s %d of %d", cells, bar.c_str(), 100 * share, what_.c_str(), done,
                 total_);
}

}  // namespace zeltrack
