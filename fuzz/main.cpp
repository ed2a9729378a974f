// Runs a target over the files and folders of the command line, where there is no libFuzzer: its seeds, and what it
// once stumbled over, are tests of every build.
#include "Fuzz.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace fs = std::filesystem;

namespace {

void run(const fs::path &file)
{
    std::puts(file.c_str());
    std::fflush(stdout);
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(stream), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
}

} // namespace

int main(int count, char *words[])
{
    LLVMFuzzerTestOneInput(nullptr, 0);
    for (int i = 1; i < count; ++i) {
        if (!fs::is_directory(words[i]))
            run(words[i]);
        else
            for (const auto &entry : fs::directory_iterator(words[i]))
                run(entry.path());
    }
}
