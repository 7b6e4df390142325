// SPDX-License-Identifier: MIT
//
// Listing and naming of pictures. They are not opened: the browser knows more formats than would be known here.
#include "view/pictures.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <string_view>

#include "cli/failure.h"

namespace zeltrack {

namespace fs = std::filesystem;

static bool is_picture(const fs::path& path)
{
    static constexpr std::string_view endings[] = {".jpg", ".jpeg", ".png", ".webp", ".bmp", ".gif", ".avif"};
    std::string ending = path.extension().string();
    for (char& c : ending)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return std::find(std::begin(endings), std::end(endings), ending) != std::end(endings);
}

picture_files find_pictures(const std::string& folder, const std::string& page)
{
    std::error_code ignored;
    fs::path place = folder;
    if (fs::is_directory(place / "img1", ignored))
        place /= "img1";
    std::error_code error;
    picture_files found;
    for (fs::directory_iterator it(place, error), end; !error && it != end; it.increment(error))
        if (is_picture(it->path()))
            found.names.push_back(it->path().filename().string());
    if (error)
        throw system_failure(folder, error.value());
    if (found.names.empty())
        throw failure(printable(folder) + ": expected pictures, found none");
    std::sort(found.names.begin(), found.names.end());
    const fs::path from = page == "-" ? fs::current_path() : fs::absolute(page).parent_path();
    found.folder = fs::absolute(place).lexically_normal().lexically_relative(from.lexically_normal()).generic_string();
    return found;
}

}  // namespace zeltrack
