// Runs a target over the files in the folders of the command line, where there is no libFuzzer: its seeds, and what it
// once stumbled over, are tests of every build.
#include "Fuzz.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

int main(int count, char *words[])
{
    LLVMFuzzerTestOneInput(nullptr, 0);
    for (int i = 1; i < count; ++i) {
        for (const auto &entry : std::filesystem::directory_iterator(words[i])) {
            std::puts(entry.path().c_str());
            std::fflush(stdout);
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::string bytes(std::istreambuf_iterator<char>(stream), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
        }
    }
}
