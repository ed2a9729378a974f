// The journal beside the folder: a heading, two identities, and a path that may hold any bytes but NUL.
#include "Journal.h"

#include "Failure.h"
#include "FileTree.h"
#include "Trust.h"

#include <climits>
#include <fcntl.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace qv {

namespace {

constexpr std::string_view heading = "UpdateInstaller journal 1\n";

fs::path draftOf(const fs::path &path)
{
    return path.string() + "-draft";
}

constexpr size_t mostBytes = PATH_MAX + 256;

/// The whole file, if it is ours; cut to mostBytes, which no journal has.
std::string textOf(int file)
{
    struct stat status
    {
    };
    if (fstat(file, &status) != 0 || !isOurs(status))
        return {};
    std::string text(mostBytes, '\0');
    const ssize_t got = ::read(file, text.data(), text.size());
    text.resize(got < 0 ? 0 : static_cast<size_t>(got));
    return text;
}

} // namespace

std::optional<Journal> Journal::read(const fs::path &path)
{
    const int file = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0 && errno == ENOENT)
        return {};
    if (file < 0)
        throw Failure::ofSystem("cannot open " + path.string());
    const std::string text = textOf(file);
    close(file);

    const size_t first = heading.size();
    const size_t second = text.find('\n', first) + 1;
    const size_t third = text.find('\n', second) + 1;
    const bool isWhole = text.compare(0, first, heading) == 0 && second > 0 && third > 0 && text.size() < mostBytes
        && text.find('\0') == std::string::npos && text[third] == '/';
    if (!isWhole)
        throw Failure(path.string() + " is no journal of ours; look at the folders beside it, then remove it");
    return Journal { text.substr(first, second - first - 1), text.substr(second, third - second - 1),
                     text.substr(third) };
}

void Journal::write(const fs::path &path) const
{
    const std::string text = std::string(heading) + oldIdentity + "\n" + newIdentity + "\n" + newDir.string();
    const fs::path draft = draftOf(path);
    unlink(draft.c_str());
    try {
        const File file(draft, O_WRONLY | O_CREAT | O_EXCL, 0600);
        writeAll(file.number, text.data(), text.size(), path);
        if (fsync(file.number) != 0 || rename(draft.c_str(), path.c_str()) != 0)
            throw Failure::ofSystem("cannot write " + path.string());
    } catch (const Failure &) {
        unlink(draft.c_str());
        throw;
    }
    syncFolder(path.parent_path());
}

void Journal::remove(const fs::path &path)
{
    unlink(draftOf(path).c_str());
    if (unlink(path.c_str()) != 0 && errno != ENOENT)
        throw Failure::ofSystem("cannot remove " + path.string());
    syncFolder(path.parent_path());
}

} // namespace qv
