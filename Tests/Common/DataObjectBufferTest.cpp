#include <limits>
#include <new>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include "Common/VQMDataObject.h"
#include "Tests/Support/AllocationFault.h"

// Not to be reached on a 64-bit machine: a buffer that fails because it is full. Doubling stops at
// the largest size of an object, and no machine has the memory to get there; what can be reached is
// the refusal of a block that would go beyond.

namespace {

constexpr uVQMINT64 kMaximum = std::numeric_limits<uVQMINT64>::max();

std::string Content(const CVQMDataBufferObject& buffer)
{
    return {buffer.GetData(), static_cast<std::size_t>(buffer.GetDataSize())};
}

void Insert(CVQMDataBufferObject& buffer, const std::string& text)
{
    buffer.InsertData(text.data(), text.size());
}

/// Whether the buffer takes bytes up to exactly this size before it moves. Fills it.
bool HasCapacity(CVQMDataBufferObject& buffer, std::size_t capacity)
{
    const char* const data = buffer.GetData();
    Insert(buffer, std::string(capacity - static_cast<std::size_t>(buffer.GetDataSize()), 'c'));
    const bool fits = buffer.GetData() == data;
    Insert(buffer, "c");
    return fits && buffer.GetData() != data;
}

/// Allocations of one size fail while it lives.
struct FailingSize {
    explicit FailingSize(std::size_t size) { allocation_fault::FailSize(size); }
    ~FailingSize() { allocation_fault::FailSize(0); }
    FailingSize(const FailingSize&) = delete;
    FailingSize& operator=(const FailingSize&) = delete;
};

} // namespace

TEST(DataBuffer, IsUnallocatedUntilSomethingIsStored)
{
    CVQMDataBufferObject buffer;
    EXPECT_EQ(buffer.GetData(), nullptr);
    EXPECT_EQ(buffer.GetDataSize(), 0U);
    buffer.Clear();
    buffer.InsertData("abc", 0);
    buffer.InsertData(nullptr, 0);
    EXPECT_EQ(buffer.GetData(), nullptr);
    EXPECT_EQ(buffer.GetDataSize(), 0U);
}

TEST(DataBuffer, AppendsBytesZerosIncluded)
{
    CVQMDataBufferObject buffer;
    Insert(buffer, std::string("a\0b", 3));
    Insert(buffer, "\xff");
    buffer.InsertData("", 1);
    EXPECT_EQ(Content(buffer), std::string("a\0b\xff\0", 5));
}

TEST(DataBuffer, ClearKeepsTheCapacity)
{
    CVQMDataBufferObject buffer;
    Insert(buffer, std::string(100, 'x'));
    const char* const data = buffer.GetData();
    buffer.Clear();
    EXPECT_EQ(buffer.GetDataSize(), 0U);
    EXPECT_EQ(buffer.GetData(), data);
    Insert(buffer, std::string(128, 'y')); // 128 is what 100 bytes doubled up to
    EXPECT_EQ(buffer.GetData(), data);
    EXPECT_EQ(Content(buffer), std::string(128, 'y'));
}

TEST(DataBuffer, CapacityIsWhatDoublingReaches)
{
    const struct {
        std::size_t first;
        std::size_t then;
        std::size_t capacity;
    } cases[] = {{0, 1, 1}, {0, 2, 2}, {0, 3, 4}, {0, 1000, 1024}, {1, 1, 2}, {4, 1, 8}, {1024, 3073, 8192}};
    for (const auto& expected : cases) {
        CVQMDataBufferObject buffer;
        Insert(buffer, std::string(expected.first, 'a'));
        const std::string block(expected.then, 'b');
        {
            const FailingSize failing(expected.capacity);
            EXPECT_THROW(Insert(buffer, block), std::bad_alloc) << expected.capacity;
            EXPECT_EQ(Content(buffer), std::string(expected.first, 'a'));
        }
        Insert(buffer, block);
        EXPECT_EQ(Content(buffer), std::string(expected.first, 'a') + block);
    }
}

TEST(DataBuffer, ReservesRoomForExpectedBytes)
{
    CVQMDataBufferObject buffer;
    buffer.AppendReserving("abc", 3, 97);
    EXPECT_TRUE(HasCapacity(buffer, 100));
    CVQMDataBufferObject other;
    other.AppendReserving("abc", 3, 0);
    EXPECT_TRUE(HasCapacity(other, 4)) << "as without it";
}

// The failure of a block of the reserved size shows that it was requested.
TEST(DataBuffer, OnlyDoublesWhenThereIsNoMemoryToReserve)
{
    constexpr std::size_t kAtFirst = std::size_t{64} << 20U;
    constexpr std::size_t kMany = std::size_t{8} << 20U;
    const struct {
        std::size_t first;
        uVQMINT64 expected;
        std::size_t reserved;
        std::size_t doubled;
    } cases[] = {{0, 97, 100, 4},
                 {4, 93, 100, 8},
                 {0, kAtFirst, kAtFirst + 3, 4},
                 {0, kAtFirst + 1, kAtFirst + 3, 4},
                 {0, kMaximum, kAtFirst + 3, 4},
                 {kMany, kMaximum, (kMany + 3) * 17, kMany * 2}};
    for (const auto& expected : cases) {
        CVQMDataBufferObject buffer;
        Insert(buffer, std::string(expected.first, 'a'));
        {
            const FailingSize failing(expected.reserved);
            buffer.AppendReserving("bbb", 3, expected.expected);
        }
        EXPECT_TRUE(Content(buffer) == std::string(expected.first, 'a') + "bbb") << expected.reserved;
        EXPECT_TRUE(HasCapacity(buffer, expected.doubled)) << expected.reserved;
    }
}

TEST(DataBuffer, WithoutMemoryToDoubleNothingIsAppended)
{
    CVQMDataBufferObject buffer;
    Insert(buffer, "aaaa");
    const FailingSize failing(8);
    EXPECT_THROW(buffer.AppendReserving("bbb", 3, 1), std::bad_alloc);
    EXPECT_EQ(Content(buffer), "aaaa");
}

TEST(DataBuffer, AMoveTakesTheBytesAndLeavesAnEmptyBuffer)
{
    CVQMDataBufferObject buffer;
    Insert(buffer, "abc");
    const char* const data = buffer.GetData();
    CVQMDataBufferObject moved(std::move(buffer));
    EXPECT_EQ(moved.GetData(), data);
    EXPECT_EQ(moved.GetDataSize(), 3U);
    EXPECT_EQ(buffer.GetData(), nullptr); // NOLINT(bugprone-use-after-move): what a move leaves is defined
    EXPECT_EQ(buffer.GetDataSize(), 0U);
    Insert(buffer, "a new life");
    EXPECT_EQ(Content(buffer), "a new life");

    CVQMDataBufferObject target;
    Insert(target, "before");
    target = std::move(moved);
    EXPECT_EQ(target.GetData(), data);
    EXPECT_EQ(moved.GetData(), nullptr); // NOLINT(bugprone-use-after-move): likewise
    CVQMDataBufferObject& self = target;
    target = std::move(self);
    EXPECT_EQ(Content(target), "abc");
}

TEST(DataBuffer, APartThatFitsMovesNothing)
{
    CVQMDataBufferObject buffer;
    buffer.AppendReserving("ab", 2, 2);
    const char* const data = buffer.GetData();
    buffer.AppendReserving("cd", 2, 1000);
    EXPECT_EQ(buffer.GetData(), data);
    EXPECT_EQ(Content(buffer), "abcd");
}

TEST(DataBuffer, ATextHasAZeroByteBehindIt)
{
    CVQMDataBufferObject buffer;
    std::string expected;
    for (const char* text : {"", "abc", "defgh", "", "i"}) { // into a full buffer, and where there is room
        buffer.InsertText(text, std::string(text).size());
        expected += text;
        expected += '\0';
        EXPECT_EQ(Content(buffer), expected);
    }
    buffer.Clear();
    buffer.InsertText("jkl", 3);
    EXPECT_EQ(Content(buffer), std::string("jkl\0", 4));
}

TEST(DataBuffer, TakesItsOwnBytes)
{
    CVQMDataBufferObject buffer;
    Insert(buffer, "abc");
    for (int i = 0; i < 3; ++i) {
        buffer.InsertData(buffer.GetData(), buffer.GetDataSize());
    }
    EXPECT_EQ(Content(buffer), "abcabcabcabcabcabcabcabc");
    buffer.InsertData(buffer.GetData() + 1, 2);
    EXPECT_EQ(Content(buffer), "abcabcabcabcabcabcabcabcbc");
}

TEST(DataBuffer, MoreThanAnObjectCanHaveIsALengthError)
{
    CVQMDataBufferObject buffer;
    Insert(buffer, "abc");
    for (const uVQMINT64 size : {kMaximum, kMaximum - 2, kMaximum / 2}) {
        try {
            buffer.InsertData("x", size);
            ADD_FAILURE() << size;
        } catch (const std::length_error& error) {
            EXPECT_STREQ(error.what(), "vector::_M_emplace_back_aux");
        }
        EXPECT_EQ(Content(buffer), "abc");
    }
}

TEST(DataBuffer, DoublesToTheLargestSizeAndNotBeyond)
{
    constexpr auto kLargest = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
    allocation_fault::FailSize(kLargest); // no machine has that much
    CVQMDataBufferObject buffer;
    try {
        buffer.InsertData("x", kLargest / 2 + 2);
        ADD_FAILURE();
    } catch (const std::bad_array_new_length&) {
        ADD_FAILURE() << "more was asked for than an object can have";
    } catch (const std::bad_alloc&) {
        EXPECT_EQ(buffer.GetDataSize(), 0U);
    }
    allocation_fault::FailSize(0);
}

TEST(DataBuffer, CopiesAreSeparate)
{
    CVQMDataBufferObject buffer;
    Insert(buffer, "abc");
    CVQMDataBufferObject copy = buffer;
    Insert(copy, "d");
    EXPECT_EQ(Content(buffer), "abc");
    EXPECT_EQ(Content(copy), "abcd");
    buffer = copy;
    copy.Clear();
    EXPECT_EQ(Content(buffer), "abcd");
}
