// Runs a fuzz target without libFuzzer, so that any compiler can check that old findings stay fixed. The inputs are the
// files of the given corpus folders, prefixes of them, and a fixed sequence of mutations.

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());
// The undefined-behaviour sanitizer is to end the process with a signal as well, so that the input is saved.
extern "C" const char* __ubsan_default_options() { return "abort_on_error=1:print_stacktrace=1"; }

namespace {

using Input = std::vector<std::uint8_t>;

constexpr std::size_t maxPrefixes = 3000;     // of the whole corpus, roughly; evenly spread if there are more
constexpr std::size_t usualMutations = 3000;  // of the whole corpus; --mutations=N asks for others
constexpr std::size_t maxEdits = 6;           // per mutation
constexpr unsigned maxSeconds = 20;           // per input

const Input* running = nullptr;
std::string failedInput;

/// Saves the input that is running, so that it can be passed as an argument and run again.
void keepRunningInput() {
    if (running == nullptr) return;
    if (std::FILE* file = std::fopen(failedInput.c_str(), "wb")) {
        std::fwrite(running->data(), 1, running->size(), file);
        std::fclose(file);
        std::fprintf(stderr, "failed input of %zu bytes saved to ./%s\n", running->size(), failedInput.c_str());
    }
    running = nullptr;
}

void dieOf(int signal) {
    keepRunningInput();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// Installs handlers for the signals that no sanitizer reports by itself.
void catchDeath() {
    failedInput = program_invocation_short_name + std::string("-failed-input");
    for (const int signal : {SIGABRT, SIGILL, SIGTRAP, SIGALRM}) std::signal(signal, dieOf);
    if (__sanitizer_set_death_callback != nullptr)
        __sanitizer_set_death_callback(keepRunningInput);
    else
        for (const int signal : {SIGSEGV, SIGBUS, SIGFPE}) std::signal(signal, dieOf);
}

void run(const Input& input) {
    // Storage of exactly the input's size, so that an address sanitizer reports a read past it.
    const std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[input.size()]);
    std::copy(input.begin(), input.end(), exact.get());
    running = &input;
    alarm(maxSeconds);
    LLVMFuzzerTestOneInput(exact.get(), input.size());
    running = nullptr;
}

std::vector<Input> inputsIn(const std::filesystem::path& path) {
    std::vector<std::filesystem::path> files;
    if (std::filesystem::is_directory(path))
        for (const auto& entry : std::filesystem::directory_iterator(path)) files.push_back(entry.path());
    else
        files.push_back(path);
    std::sort(files.begin(), files.end());
    std::vector<Input> inputs;
    for (const auto& file : files) {
        std::ifstream in(file, std::ios::binary);
        if (!in) throw std::runtime_error(file.string() + " cannot be read");
        inputs.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    return inputs;
}

void runPrefixes(const std::vector<Input>& corpus) {
    std::size_t sizes = 0;
    for (const auto& input : corpus) sizes += input.size();
    const std::size_t step = sizes / maxPrefixes + 1;
    for (const auto& input : corpus) {
        for (std::size_t size = 0; size < input.size(); size += step) run(Input(input.data(), input.data() + size));
        run(input);
    }
}

/// Mutates inputs in a sequence that is the same on every machine.
class Mutator {
public:
    void edit(Input& input, const Input& other) {
        for (std::size_t left = below(maxEdits) + 1; left > 0; --left) editOnce(input, other);
    }
    std::size_t below(std::size_t n) { return random_() % n; }

private:
    void editOnce(Input& input, const Input& other) {
        constexpr std::uint8_t telling[] = {0, 1, 2, 3, 4, 5, 53, 82, 127, 128, 252, 253, 254, 255};
        const std::size_t at = below(input.size() + 1);
        const auto place = input.begin() + static_cast<std::ptrdiff_t>(at);
        if (place == input.end() || below(8) == 0) {
            input.insert(place, telling[below(std::size(telling))]);
            return;
        }
        const auto length = static_cast<std::ptrdiff_t>(below(std::min<std::size_t>(input.size() - at, 32)) + 1);
        switch (below(6)) {
            case 0:
                input.erase(place, place + length);
                break;
            case 1:
                *place ^= static_cast<std::uint8_t>(1U << below(8));
                break;
            case 2:
                *place = static_cast<std::uint8_t>(random_());
                break;
            case 3:
                repeat(input, at, length);
                break;
            case 4:
                overwrite(input, at, other);
                break;
            default:
                *place = telling[below(std::size(telling))];
        }
    }
    static void repeat(Input& input, std::size_t at, std::ptrdiff_t length) {
        const auto from = input.begin() + static_cast<std::ptrdiff_t>(at);
        const Input copy(from, from + length);
        input.insert(from, copy.begin(), copy.end());
    }
    static void overwrite(Input& input, std::size_t at, const Input& other) {
        for (std::size_t i = at; i < std::min(input.size(), other.size()); ++i) input[i] = other[i];
    }

    std::mt19937 random_{2131};
};

void runMutations(const std::vector<Input>& corpus, std::size_t mutations) {
    Mutator mutator;
    for (std::size_t i = 0; i < mutations; ++i) {
        Input input = corpus[i % corpus.size()];
        mutator.edit(input, corpus[mutator.below(corpus.size())]);
        run(input);
    }
}

}  // namespace

int main(int argc, char** argv) try {
    catchDeath();
    constexpr std::string_view mutationsOption = "--mutations=";
    std::size_t mutations = usualMutations;
    std::vector<Input> corpus;
    for (const std::string_view argument : std::vector<std::string_view>(argv + 1, argv + argc)) {
        if (argument.starts_with(mutationsOption))
            mutations = std::stoul(std::string(argument.substr(mutationsOption.size())));
        else
            for (auto& input : inputsIn(argument)) corpus.push_back(std::move(input));
    }
    if (corpus.empty()) throw std::runtime_error("no corpus: give files, or folders that hold some");
    runPrefixes(corpus);
    runMutations(corpus, mutations);
    std::printf("%zu inputs, their prefixes and %zu mutations: passed\n", corpus.size(), mutations);
    return 0;
} catch (const std::exception& error) {
    keepRunningInput();
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
