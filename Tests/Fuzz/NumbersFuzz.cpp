// The input as a text that is read as a number, a date and a time; its first bytes as numbers that
// are written as text; and its bytes as pieces of a buffer.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Data/VQMScheduleContainer.h"
#include "Tests/Fuzz/Check.h"
#include "Tests/Fuzz/PolicyText.h"
#include "Tests/Fuzz/TextOracle.h"

namespace {

constexpr char kDigits[] = "0123456789";

template <typename Number>
Number Scan(const std::string& text)
{
    Number number = 77;
    CVQMDataObject().StrToNumber(text.c_str(), number);
    return number;
}

template <typename Number>
std::string Write(Number number)
{
    std::string text = "replaced";
    CVQMDataObject().NumberToStr(number, text);
    return text;
}

template <typename... Arguments>
std::string Format(const char* format, Arguments... arguments)
{
    char text[512];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

/// The same bits; the many forms of what is not a number count as one.
bool IsSame(double left, double right)
{
    return (std::isnan(left) && std::isnan(right)) || (left == right && std::signbit(left) == std::signbit(right));
}

/// The text's first digits with their sign and fraction, as far as no precision is lost on the way.
std::string PlainStart(const std::string& text)
{
    const auto skipDigits = [&text](std::size_t start) {
        return std::min({text.find_first_not_of(kDigits, start), text.size(), start + 15});
    };
    const std::size_t start = !text.empty() && text.front() == '-' ? 1 : 0;
    const std::size_t point = skipDigits(start);
    const bool hasFraction = point < text.size() && text[point] == '.';
    return point == start ? "0" : text.substr(0, hasFraction ? skipDigits(point + 1) : point);
}

void CheckScanners(const std::string& text)
{
    CheckEqual(IntOf(text), Scan<int>(text), "the int");
    CheckEqual(UnsignedOf(text), Scan<uVQMINT64>(text), "the 64-bit number");
    const double number = Scan<double>(text);
    Check(IsSame(DoubleOf(text), number), "the double");

    const std::string plain = PlainStart(text);
    const double nearby = std::strtod(plain.c_str(), nullptr);
    Check(std::fabs(Scan<double>(plain) - nearby) <= std::fabs(nearby) * 1e-14, "the double is not what is written");
}

void CheckWriters(std::uint64_t bits)
{
    const uVQMINT64 large = bits;
    const auto small = static_cast<int>(static_cast<std::uint32_t>(bits));
    double real = 0;
    std::memcpy(&real, &bits, sizeof real);

    CheckEqual(Format("%llu", large), Write(large), "the 64-bit number's text");
    CheckEqual(Format("%d", small), Write(small), "the int's text");
    CheckEqual(Format("%f", real).substr(0, 253), Write(real), "the double's text");
    CheckEqual(large, Scan<uVQMINT64>(Write(large)), "the 64-bit number read back");
    CheckEqual(small, Scan<int>(Write(small)), "the int read back");

    int argument = small;
    std::string hexadecimal = "replaced";
    CVQMDataObject().NumberToHexStr(argument, hexadecimal);
    CheckEqual(Format("%08X", static_cast<unsigned int>(small)), hexadecimal, "the hexadecimal text");
}

void CheckTimes(const std::string& text)
{
    CVQMScheduleContainer container;
    _VQMTime time;
    time.nSpare = 7;
    container.ConvertHHMMSSTimeToVQMTime(text, time);
    CheckEqual(Describe(TimeOf(text)), Describe(time), "the time");
    container.ConvertYYYYMMDDDateToVQMTime(text, time);
    CheckEqual(Describe(DateOf(text)), Describe(time), "the date");
    CheckEqual(!text.empty() && text.find_first_not_of(kDigits) == std::string::npos,
               container.CheckStringHasOnlyNumber(text), "whether there are only digits");
}

/// A buffer and what must be in it.
class CheckedBuffer {
public:
    void Insert(const char* data, std::size_t size)
    {
        const std::string added(data, size);
        const char* const before = buffer_.GetData();
        const bool fits = text_.size() + size <= largest_;
        buffer_.InsertData(data, size);
        text_ += added;
        largest_ = std::max(largest_, text_.size());
        Check(!fits || buffer_.GetData() == before, "a buffer moves although the bytes fit");
        CheckContent();
    }

    void InsertItself() { Insert(buffer_.GetData(), text_.size()); }

    void Clear()
    {
        buffer_.Clear();
        text_.clear();
        CheckContent();
    }

    void ReplaceByCopy()
    {
        const CVQMDataBufferObject copy(buffer_);
        CVQMDataBufferObject assigned;
        assigned.InsertData("other", 5);
        assigned = copy;
        buffer_ = assigned;
        largest_ = text_.size();
        CheckContent();
    }

    std::size_t Size() const { return text_.size(); }

private:
    void CheckContent() const
    {
        CheckEqual<uVQMINT64>(text_.size(), buffer_.GetDataSize(), "the buffer's size");
        Check((buffer_.GetData() == nullptr) == (largest_ == 0), "null means that nothing was ever stored");
        Check(text_.empty() || std::memcmp(buffer_.GetData(), text_.data(), text_.size()) == 0, "the buffer's bytes");
    }

    CVQMDataBufferObject buffer_;
    std::string text_;
    std::size_t largest_ = 0; ///< what has been stored at one time
};

void CheckBuffer(const std::string& input)
{
    CheckedBuffer buffer;
    for (std::size_t i = 0; i < std::min<std::size_t>(input.size(), 64); ++i) {
        const auto code = static_cast<unsigned char>(input[i]);
        if (code == 'c') {
            buffer.Clear();
        } else if (code == 'd' && buffer.Size() != 0 && buffer.Size() < 20000) {
            buffer.InsertItself();
        } else if (code == '=') {
            buffer.ReplaceByCopy();
        } else {
            buffer.Insert(input.data(), code % (input.size() + 1));
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string input(reinterpret_cast<const char*>(data), size);
    CheckScanners(input.substr(0, input.find('\0')));
    CheckTimes(input);
    std::uint64_t bits = 0;
    std::memcpy(&bits, data, std::min(size, sizeof bits));
    CheckWriters(bits);
    CheckBuffer(input);
    return 0;
}
