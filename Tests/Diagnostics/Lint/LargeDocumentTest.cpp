#include <algorithm>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "Tests/Diagnostics/Lint/Documents.h"
#include "Tests/Support/AllocationFault.h"

namespace {

/// Writes a document of any size without ever having all of it.
class Generator {
public:
    Generator(int periods, int items, std::string size) : periods_(periods), items_(items), size_(std::move(size)) {}

    std::size_t operator()(char* buffer, std::size_t size)
    {
        while (text_.size() < size && !ended_) {
            Next();
        }
        const std::size_t count = std::min(size, text_.size());
        text_.copy(buffer, count);
        text_.erase(0, count);
        return count;
    }

private:
    static std::string Clock(int seconds)
    {
        char text[16];
        std::snprintf(text, sizeof text, "%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
        return text;
    }

    void Next()
    {
        if (!begun_) {
            text_ += "<rsp state='ok'>\n";
            begun_ = true;
        } else if (period_ == periods_) {
            text_ += "</rsp>\n";
            ended_ = true;
        } else if (item_ == 0) {
            text_ += "<schedule start_time='" + Clock(period_) + "' end_time='" + Clock(period_ + 1) + "'>\n";
            item_ = 1;
        } else if (item_ > items_) {
            text_ += "</schedule>\n";
            item_ = 0;
            ++period_;
        } else {
            const std::string number = std::to_string(item_++);
            text_ += "<item id='A" + number + "' order='" + number + "'><name>clip" + number + "</name><size>" + size_ +
                     "</size><format>mp4</format></item>\n";
        }
    }

    int periods_;
    int items_;
    std::string size_;
    int period_ = 0;
    int item_ = 0;
    bool begun_ = false;
    bool ended_ = false;
    std::string text_;
};

lint::Report LintMeasured(Generator generator, std::size_t& mostMemory)
{
    const std::size_t before = allocation_fault::BytesInUse();
    allocation_fault::ForgetMost();
    lint::Report report = lint::Lint(generator, TestOptions());
    mostMemory = allocation_fault::MostBytes() - before;
    return report;
}

TEST(LintLargeDocument, TakesMemoryForTheLargestPeriodOnly)
{
    std::size_t small = 0;
    std::size_t large = 0;
    EXPECT_TRUE(LintMeasured(Generator(20, 100, "1048576"), small).findings.empty());
    EXPECT_TRUE(LintMeasured(Generator(1000, 100, "1048576"), large).findings.empty());
    EXPECT_LT(large, 4U * 1024U * 1024U);
    EXPECT_LT(large, 2 * small + 320000);
}

TEST(LintLargeDocument, KeepsAThousandFindingsAndCountsTheRest)
{
    std::size_t memory = 0;
    const lint::Report report = LintMeasured(Generator(1000, 100, "10MB"), memory);
    EXPECT_EQ(report.findings.size(), 1000U);
    EXPECT_EQ(report.counts.errors, 100000U);
    EXPECT_EQ(report.notKept, 99000U);
    EXPECT_EQ(report.findings.front().line, 3U);
    EXPECT_LT(memory, 6U * 1024U * 1024U);
}

TEST(LintLargeDocument, TakesOneBigPeriod)
{
    std::size_t memory = 0;
    EXPECT_TRUE(LintMeasured(Generator(1, 500000, "1048576"), memory).findings.empty());
    EXPECT_LT(memory, 500000U * 200U);
}

} // namespace
