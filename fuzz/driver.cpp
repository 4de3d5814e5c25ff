// driver - replays fuzz inputs without a fuzzing engine: each argument is
// a file or a folder of files, each file one input. Lets any compiler run
// the corpus as an ordinary test.
//
// Like libFuzzer's -timeout, every input has a time limit: an input that
// runs longer (LX_FUZZ_TIMEOUT seconds, 10 by default, long enough for a
// build with sanitizers) ends the run with its name, so that an input that
// is slow fails the test as surely as one that crashes.
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fs = std::filesystem;

namespace {

char current[4096];

void on_timeout(int) {
    const char head[] = "fuzz driver: input ran out of time: ";
    (void)!write(2, head, sizeof head - 1);
    (void)!write(2, current, std::strlen(current));
    (void)!write(2, "\n", 1);
    _exit(70);
}

int run_file(const fs::path &path, unsigned timeout) {
    std::ifstream in(path, std::ios::binary);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::snprintf(current, sizeof current, "%s", path.c_str());
    alarm(timeout);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    alarm(0);
    return 1;
}

} // namespace

int main(int argc, char **argv) {
    const char *limit = std::getenv("LX_FUZZ_TIMEOUT");
    const unsigned timeout = limit && std::atoi(limit) > 0 ? static_cast<unsigned>(std::atoi(limit)) : 10;
    std::signal(SIGALRM, on_timeout);
    int runs = 0;
    for (int i = 1; i < argc; ++i) {
        fs::path arg(argv[i]);
        if (fs::is_directory(arg)) {
            for (const auto &entry : fs::directory_iterator(arg))
                if (entry.is_regular_file()) runs += run_file(entry.path(), timeout);
        } else {
            runs += run_file(arg, timeout);
        }
    }
    std::printf("replayed %d inputs\n", runs);
    return 0;
}
