// Names: what the caller's paths mean, and what this program calls its own beside the installed folder.
#include "Places.h"

#include <algorithm>

namespace fs = std::filesystem;

namespace qv {

fs::path located(const fs::path &path)
{
    std::string text = path.string();
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
    if (text.empty())
        return {};

    std::error_code error;
    const fs::path given = fs::absolute(text, error);
    const fs::path name = given.filename();
    fs::path place;
    if (name == "." || name == "..")
        place = fs::canonical(given, error);
    else
        place = fs::canonical(given.parent_path(), error) / name;
    return error || !place.has_filename() ? fs::path() : place;
}

bool isInside(const fs::path &inner, const fs::path &outer)
{
    return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

Places::Places(const fs::path &folder) : folder(folder), parent(folder.parent_path())
{
    const std::string name = folder.filename().string();
    spare = parent / ("." + name + ".update-spare");
    aside = parent / ("." + name + ".update-aside");
    journal = parent / ("." + name + ".update-journal");
    lock = parent / ("." + name + ".update-lock");
    log = parent / (name + ".update.log");
}

} // namespace qv
