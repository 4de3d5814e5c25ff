// driver - replays fuzz inputs without a fuzzing engine: each argument is
// a file or a folder of files, each file one input. Lets any compiler run
// the corpus as an ordinary test.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fs = std::filesystem;

static int run_file(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return 1;
}

int main(int argc, char **argv) {
    int runs = 0;
    for (int i = 1; i < argc; ++i) {
        fs::path arg(argv[i]);
        if (fs::is_directory(arg)) {
            for (const auto &entry : fs::directory_iterator(arg))
                if (entry.is_regular_file()) runs += run_file(entry.path());
        } else {
            runs += run_file(arg);
        }
    }
    std::printf("replayed %d inputs\n", runs);
    return 0;
}
