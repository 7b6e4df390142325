// SPDX-License-Identifier: MIT
//
// Folders are listed once and in the order of the names, so that what is said of them does not depend on the disk.
#include "eval/pairing.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <initializer_list>
#include <iostream>
#include <map>
#include <set>

#include "cli/failure.h"

namespace zeltrack {

namespace fs = std::filesystem;

using files_by_name = std::map<std::string, fs::path>;

static bool is_file(const fs::path& path)
{
    std::error_code ignored;
    return fs::exists(path, ignored) && !fs::is_directory(path, ignored);
}

static bool is_folder(const std::string& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status))
        throw system_failure(path, error ? error.value() : ENOENT);
    return fs::is_directory(status);
}

using places = std::initializer_list<const char*>;  // within the folder of a sequence
static constexpr places truth_places = {"gt.txt", "gt/gt.txt"};
static constexpr places detection_places = {"det.txt", "det/det.txt"};

static fs::path first_within(const fs::path& folder, places wanted)
{
    for (const char* place : wanted)
        if (is_file(folder / place))
            return folder / place;
    return {};
}

static void add(files_by_name& files, const std::string& name, const fs::path& path)
{
    const auto [known, fresh] = files.emplace(name, path);
    if (!fresh)
        throw failure(printable(path.string()) + ": sequence " + printable(name) + " is already in " +
                      printable(known->second.string()));
}

// SEQ.txt and what is at those places within the folders SEQ.
static files_by_name files_in(const std::string& folder, places wanted)
{
    files_by_name files;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        const fs::path& path = it->path();
        if (path.filename().string()[0] == '.')
            continue;
        if (path.extension() == ".txt" && is_file(path))
            add(files, path.stem().string(), path);
        else if (const fs::path within = first_within(path, wanted); !within.empty())
            add(files, path.filename().string(), within);
    }
    if (error)
        throw system_failure(folder, error.value());
    return files;
}

// The folder of the sequence that a file of truth belongs to; empty for SEQ.txt, beside which lie other sequences.
static fs::path folder_of(const fs::path& truth)
{
    if (truth.filename() != "gt.txt")
        return {};
    std::error_code ignored;
    const fs::path within = fs::absolute(truth, ignored).lexically_normal().parent_path().filename();
    return (truth.parent_path() / (within == "gt" ? ".." : ".")).lexically_normal();
}

static sequence_files sequence_of(const std::string& name, const fs::path& truth)
{
    const fs::path folder = folder_of(truth);
    const fs::path info = folder / "seqinfo.ini";
    const bool known = !folder.empty() && is_file(info);
    return {name, truth.string(), known ? info.string() : "", {}};
}

// What a folder is called, also where it is given as "." or with a slash at its end.
static std::string last_name(const std::string& path)
{
    std::error_code ignored;
    const fs::path normal = (fs::absolute(path, ignored) / "").lexically_normal().parent_path();
    return normal.has_filename() ? normal.filename().string() : path;
}

static std::vector<std::string> names_of(const std::vector<std::string>& tracks, bool folders)
{
    std::vector<std::string> names;
    names.reserve(tracks.size());
    for (const std::string& path : tracks)
        names.push_back(folders ? last_name(path) : fs::path(path).stem().string());
    if (std::set<std::string>(names.begin(), names.end()).size() == names.size())
        return names;
    return tracks;
}

std::string sequence_name(const std::string& truth)
{
    const fs::path folder = folder_of(truth);
    return folder.empty() ? fs::path(truth).stem().string() : last_name(folder.string());
}

static pairing pair_single(const std::string& truth, const std::vector<std::string>& tracks)
{
    sequence_files files = sequence_of(sequence_name(truth), truth);
    files.tracks = tracks;
    return {{files}, names_of(tracks, false), {}};
}

static pairing pair_folders(const std::string& truth, const std::vector<std::string>& tracks, paired_kind kind)
{
    const files_by_name truths = files_in(truth, truth_places);
    std::vector<files_by_name> sets;
    std::set<std::string> names;
    for (const auto& [name, path] : truths)
        names.insert(name);
    for (const std::string& folder : tracks) {
        sets.push_back(files_in(folder, kind == paired_kind::detections ? detection_places : places()));
        for (const auto& [name, path] : sets.back())
            names.insert(name);
    }

    pairing result{{}, names_of(tracks, true), {}};
    for (const std::string& name : names) {
        const auto at = truths.find(name);
        const std::size_t before = result.missing.size();
        if (at == truths.end())
            result.missing.push_back(printable(name) + " in " + printable(truth));
        sequence_files files = at == truths.end() ? sequence_files{} : sequence_of(name, at->second);
        for (std::size_t s = 0; s < sets.size(); ++s) {
            const auto found = sets[s].find(name);
            if (found != sets[s].end())
                files.tracks.push_back(found->second.string());
            else
                result.missing.push_back(printable(name) + " in " + printable(tracks[s]));
        }
        if (result.missing.size() == before)
            result.sequences.push_back(files);
    }
    return result;
}

pairing pair_files(const std::string& truth, const std::vector<std::string>& tracks, paired_kind kind)
{
    const bool folders = truth != "-" && is_folder(truth);
    for (const std::string& path : tracks)
        if ((path != "-" && is_folder(path)) != folders)
            throw failure(printable(path) + (folders ? ": expected a folder, as is " : ": expected a file, as is ") +
                              printable(truth),
                          exit_usage);
    return folders ? pair_folders(truth, tracks, kind) : pair_single(truth, tracks);
}

void refuse_missing(const pairing& pairs, bool skip, bool quiet, const std::string& other)
{
    std::string missing;
    for (const std::string& it : pairs.missing)
        missing += (missing.empty() ? "" : ", ") + it;
    if (!missing.empty() && !skip)
        throw failure("no sequence " + missing + " (--skip-missing leaves out what is not everywhere)");
    if (pairs.sequences.empty())
        throw failure("expected a sequence that has ground truth and " + other + ", found none");
    if (!missing.empty() && !quiet)
        std::cerr << "left out: no sequence " << missing << '\n';
}

}  // namespace zeltrack
