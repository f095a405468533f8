// Text to number: the product's scanners, and the standard library's on the same texts.

#include <charconv>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "Benchmarks/Library/Work.h"
#include "Common/VQMDataObject.h"

namespace {

constexpr std::size_t kRuns = 100;

template <typename Number>
void Keep(Number& number)
{
    asm volatile("" : : "m"(number) : "memory"); // the compiler must not leave the work out
}

/// Goes over the texts `kRuns` times.
template <typename Scan>
Work ScanningWork(std::vector<std::string> texts, Scan scan)
{
    const double units = static_cast<double>(texts.size() * kRuns);
    return {[texts = std::move(texts), scan]() mutable {
                for (std::size_t run = 0; run < kRuns; ++run) {
                    for (const std::string& text : texts) {
                        scan(text);
                    }
                }
            },
            units};
}

template <typename Number>
Work ProductWork(std::vector<std::string> texts)
{
    // One object for all texts, as the readers of the library are: each calls the scanners on itself.
    return ScanningWork(std::move(texts), [scanner = CVQMDataObject()](const std::string& text) mutable {
        Number number;
        scanner.StrToNumber(text.c_str(), number);
        Keep(number);
    });
}

/// The scanners know a text by its first byte alone, so its length is for `from_chars` to find.
template <typename Number>
Work FromCharsWork(std::vector<std::string> texts)
{
    return ScanningWork(std::move(texts), [](const std::string& text) {
        Number number = 0;
        const char* const first = text.c_str();
        std::from_chars(first, first + std::strlen(first), number);
        Keep(number);
    });
}

/// Numbers of one digit up to `digits`, as often each.
std::vector<std::string> Digits(std::size_t count, std::size_t digits)
{
    std::mt19937_64 random(1);
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < count; ++i) {
        std::string text(1, static_cast<char>('1' + random() % 9));
        while (text.size() < 1 + i % digits) {
            text += static_cast<char>('0' + random() % 10);
        }
        texts.push_back(text);
    }
    return texts;
}

std::vector<std::string> Decimals(std::size_t count)
{
    std::vector<std::string> texts = Digits(count, 9);
    for (std::size_t i = 0; i < count; ++i) {
        texts[i] += "." + Digits(i % 6 + 1, 6).back();
    }
    return texts;
}

} // namespace

Work ScanInts(std::size_t size)
{
    return ProductWork<int>(Digits(size, 9));
}

Work ScanIntsFromChars(std::size_t size)
{
    return FromCharsWork<int>(Digits(size, 9));
}

Work ScanSizes(std::size_t size)
{
    return ProductWork<uVQMINT64>(Digits(size, 19));
}

Work ScanSizesFromChars(std::size_t size)
{
    return FromCharsWork<uVQMINT64>(Digits(size, 19));
}

Work ScanDoubles(std::size_t size)
{
    return ProductWork<double>(Decimals(size));
}

Work ScanDoublesFromChars(std::size_t size)
{
    return FromCharsWork<double>(Decimals(size));
}
