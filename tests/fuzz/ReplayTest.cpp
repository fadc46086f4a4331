// What the coverage-guided fuzzer has found is tried again, and a short round of damaged copies of
// it with a fixed seed: without that fuzzer, in the sanitized builds of the unit tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "FuzzCases.h"
#include "Target.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> corpusOf(const std::string& target) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(fs::path(FUZZ_CORPUS) / target))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());  // the order of a folder is the file system's affair
    std::vector<std::string> inputs;
    for (const fs::path& path : files) {
        std::ifstream file(path, std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return inputs;
}

class Damage {
public:
    std::string of(const std::vector<std::string>& inputs) {
        std::string bytes = inputs[below(inputs.size())];
        for (std::size_t left = 1 + below(4); left > 0; --left) {
            const std::size_t place = below(bytes.size() + 1);
            switch (below(5)) {
                case 0:
                    bytes.resize(place);
                    break;
                case 1:
                    bytes.insert(place, 1, anyByte());
                    break;
                case 2:
                    bytes.replace(place, std::min<std::size_t>(4, bytes.size() - place), odd());
                    break;
                case 3:
                    bytes.insert(place, inputs[below(inputs.size())].substr(0, 1 + below(64)));
                    break;
                default:
                    if (place < bytes.size()) bytes[place] = anyByte();
            }
        }
        return bytes;
    }

private:
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_()) % bound; }
    char anyByte() { return static_cast<char>(random_()); }
    /// A word that is the edge of something.
    std::string odd() {
        static const char* const words[] = {"\xFF\xFF\xFF\xFF", "\xFF\xFF\xFF\x7F",
                                            "\xFF\xFF\xFF\x07", "0000", "9999"};
        return words[below(std::size(words))];
    }

    std::mt19937 random_{fuzz::seed};
};

void tryOne(const fuzz::Target& target, const std::string& input) {
    fuzz::present = input;
    target.tryOne(input);
    fuzz::present = {};
}

class Replay : public testing::TestWithParam<fuzz::Target> {};

std::string nameOf(const testing::TestParamInfo<fuzz::Target>& info) {
    return info.param.name;
}

}  // namespace

TEST_P(Replay, NothingInTheCorpusBreaksAPromise) {
    const auto inputs = corpusOf(GetParam().name);
    ASSERT_FALSE(inputs.empty());
    for (const std::string& input : inputs) tryOne(GetParam(), input);
}

TEST_P(Replay, NorDoDamagedCopiesOfIt) {
    const auto inputs = corpusOf(GetParam().name);
    ASSERT_FALSE(inputs.empty());
    Damage damage;
    for (unsigned int left = fuzz::caseCount(500); left > 0; --left)
        tryOne(GetParam(), damage.of(inputs));
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Replay, testing::ValuesIn(fuzz::targets()), nameOf);
