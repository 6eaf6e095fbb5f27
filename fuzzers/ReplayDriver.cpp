#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int mutationsOfEach = 2000;

std::vector<Bytes> corpusIn(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator{folder})
        files.push_back(entry.path());
    std::ranges::sort(files);
    std::vector<Bytes> corpus;
    for (const auto& file : files) {
        std::ifstream stream{file, std::ios::binary};
        corpus.emplace_back(
            std::istreambuf_iterator<char>{stream}, std::istreambuf_iterator<char>{});
    }
    return corpus;
}

/// Changes an input a little, always in the same way for the same numbers.
class Mutator {
public:
    void mutate(Bytes& bytes, const Bytes& other)
    {
        switch (below(5)) {
        case 0:
            if (!bytes.empty())
                bytes[below(bytes.size())] ^= static_cast<std::uint8_t>(1U << below(8));
            break;
        case 1:
            bytes.insert(at(bytes, below(bytes.size() + 1)), anyByte());
            break;
        case 2:
            bytes.resize(below(bytes.size() + 1));
            break;
        case 3:
            erase(bytes);
            break;
        default:
            splice(bytes, other);
        }
    }

private:
    static Bytes::iterator at(Bytes& bytes, std::size_t index)
    {
        return bytes.begin() + static_cast<std::ptrdiff_t>(index);
    }

    std::size_t below(std::size_t end) { return m_numbers() % end; }

    /// What means something in the formats more often than the rest.
    std::uint8_t anyByte()
    {
        static constexpr std::string_view special = "{}[]\",:.\\/\n0-e= ";
        return static_cast<std::uint8_t>(below(2) == 0
                ? static_cast<unsigned char>(special[below(special.size())])
                : static_cast<unsigned char>(below(256)));
    }

    void erase(Bytes& bytes)
    {
        const std::size_t start = below(bytes.size() + 1);
        const std::size_t end = start + below(bytes.size() - start + 1);
        bytes.erase(at(bytes, start), at(bytes, end));
    }

    void splice(Bytes& bytes, const Bytes& other)
    {
        const std::size_t start = below(other.size() + 1);
        const std::size_t size = below(other.size() - start + 1);
        const auto from = other.begin() + static_cast<std::ptrdiff_t>(start);
        bytes.insert(
            at(bytes, below(bytes.size() + 1)), from, from + static_cast<std::ptrdiff_t>(size));
    }

    std::minstd_rand m_numbers{4711};
};

}  // namespace

/// Where there is no fuzzer in the compiler: runs a target over its corpus, every input cut at every
/// byte, and a fixed number of mutations. Finds what was found before, and shows that the target works.
int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS\n", argv[0]);
        return 2;
    }
    const std::vector<Bytes> corpus = corpusIn(argv[1]);
    std::size_t runs = 0;
    const auto run = [&](const Bytes& bytes, std::size_t size) {
        LLVMFuzzerTestOneInput(bytes.data(), size);
        ++runs;
    };
    Mutator mutator;
    for (std::size_t index = 0; index < corpus.size(); ++index) {
        for (std::size_t size = 0; size <= corpus[index].size(); ++size)
            run(corpus[index], size);
        Bytes bytes = corpus[index];
        for (int count = 0; count < mutationsOfEach; ++count) {
            if (count % 8 == 0)
                bytes = corpus[index];
            mutator.mutate(bytes, corpus[(index + 1) % corpus.size()]);
            run(bytes, bytes.size());
        }
    }
    std::printf("counted: %zu inputs to fuzz targets\n", runs);
    return corpus.empty() ? 1 : 0;
}
