// Runs a fuzz target without libFuzzer: first on each file named on the command line, then on seeded random
// inputs, half of them mutations of those files or of earlier inputs. The same arguments give the same
// inputs.
//
//     target [-runs=N] [FILE...]

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize);

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kMaxLength = 512;
constexpr std::size_t kPoolSize = 64;

Bytes RandomBytes(std::mt19937& ioRandom)
{
    // Mostly text: that is what the targets read.
    static constexpr char kAlphabet[] = "0123456789:;.,-+ eE\"{}[]<>/=&@$abcxyz\\\n\t";
    Bytes bytes(ioRandom() % (kMaxLength / 8));
    const bool isText = ioRandom() % 4 != 0;
    for (auto& byte : bytes) {
        byte =
            static_cast<std::uint8_t>(isText ? kAlphabet[ioRandom() % (sizeof kAlphabet - 1)] : ioRandom());
    }
    return bytes;
}

void Mutate(Bytes& ioBytes, std::mt19937& ioRandom)
{
    const auto count = 1 + ioRandom() % 4;
    for (unsigned i = 0; i < count; ++i) {
        const auto position = ioBytes.empty() ? 0 : ioRandom() % ioBytes.size();
        switch (ioRandom() % 4) {
        case 0:
            ioBytes.insert(ioBytes.begin() + static_cast<std::ptrdiff_t>(position),
                           static_cast<std::uint8_t>(ioRandom()));
            break;
        case 1:
            if (!ioBytes.empty()) {
                ioBytes.erase(ioBytes.begin() + static_cast<std::ptrdiff_t>(position));
            }
            break;
        case 2:
            if (!ioBytes.empty()) {
                ioBytes[position] ^= static_cast<std::uint8_t>(1u << (ioRandom() % 8));
            }
            break;
        default:
            if (ioBytes.size() < kMaxLength) {
                const Bytes copy(ioBytes.begin() + static_cast<std::ptrdiff_t>(position), ioBytes.end());
                ioBytes.insert(ioBytes.end(), copy.begin(), copy.end());
            }
        }
    }
}

} // namespace

int main(int inCount, char** inArguments)
{
    unsigned long runs = 10000;
    std::vector<Bytes> pool;
    for (int i = 1; i < inCount; ++i) {
        if (std::strncmp(inArguments[i], "-runs=", 6) == 0) {
            runs = std::strtoul(inArguments[i] + 6, nullptr, 10);
        } else if (inArguments[i][0] != '-') {
            std::ifstream file(inArguments[i], std::ios::binary);
            pool.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
            LLVMFuzzerTestOneInput(pool.back().data(), pool.back().size());
        }
    }
    std::mt19937 random(20201);
    for (unsigned long run = 0; run < runs; ++run) {
        Bytes bytes = RandomBytes(random);
        if (!pool.empty() && random() % 2 == 0) {
            bytes = pool[random() % pool.size()];
            Mutate(bytes, random);
        }
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        if (pool.size() < kPoolSize) {
            pool.push_back(bytes);
        } else {
            pool[random() % kPoolSize] = bytes;
        }
    }
    return 0;
}
