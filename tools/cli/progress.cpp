// SPDX-License-Identifier: MIT
//
// The bar is redrawn ten times a second and wiped at the end with blanks, which even the plainest terminal understands.
// It never takes a whole line, or the next one would not be drawn over it.
#include "cli/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace zeltrack {

static constexpr std::chrono::milliseconds patience{500};
static constexpr std::chrono::milliseconds between{100};
static constexpr std::size_t most_cells = 40;
static constexpr std::size_t least_cells = 8;  // fewer show nothing

// Columns of the terminal; its size may change at any time.
static std::size_t terminal_width()
{
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

static std::string bar_line(int done, int total, const std::string& what, const std::string& note, std::size_t width)
{
    const double share = static_cast<double>(done) / total;
    char text[96];
    std::snprintf(text, sizeof(text), "%3.0f %%  %s %d of %d", 100 * share, what.c_str(), done, total);
    const std::string numbers = text + note;
    if (width < numbers.size() + least_cells + 4)
        return numbers.substr(0, width - 1);
    const std::size_t cells = std::min(most_cells, width - numbers.size() - 4);
    const auto filled = static_cast<std::size_t>(share * static_cast<double>(cells));
    return '[' + std::string(filled, '#') + std::string(cells - filled, ' ') + "] " + numbers;
}

progress::progress(bool wanted, std::string what, int total)
    : active_(wanted && isatty(STDERR_FILENO) == 1),
      what_(std::move(what)),
      total_(total),
      next_(clock::now() + patience)
{
}

progress::~progress()
{
    if (drawn_ > 0)
        std::fprintf(stderr, "\r%*s\r", drawn_, "");
}

void progress::update(int done, const std::string& note)
{
    if (!active_ || clock::now() < next_)
        return;
    next_ = clock::now() + between;
    const std::string line = bar_line(done, total_, what_, note, terminal_width());
    const int length = static_cast<int>(line.size());
    std::fprintf(stderr, "\r%-*s", std::max(length, drawn_), line.c_str());
    drawn_ = length;
}

}  // namespace zeltrack
