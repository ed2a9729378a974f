// The journal that a killed update left: it is refused, or it is one that was written, byte for byte.
#include "Journal.h"
#include "Failure.h"
#include "Fuzz.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

using namespace qv;
namespace fs = std::filesystem;

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const fs::path path = fs::temp_directory_path() / ("journal-" + std::to_string(getpid()));
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    std::ofstream(path, std::ios::binary) << bytes;
    try {
        const Journal journal = Journal::read(path).value();
        demand(journal.newDir.is_absolute() && journal.newDir.string().find('\0') == std::string::npos, "it is a path");
        journal.write(path);
        std::ifstream stream(path, std::ios::binary);
        demand(std::string(std::istreambuf_iterator<char>(stream), {}) == bytes, "nothing is lost");
    } catch (const Failure &) {
    }
    Journal::remove(path);
    return 0;
}
