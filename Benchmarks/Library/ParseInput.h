#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

#include "Benchmarks/Library/ScheduleDocument.h"
#include "Benchmarks/Library/Work.h"
#include "Data/VQMScheduleRecords.h"

constexpr std::size_t kItemSize = 1048576;

/// A work that fills a policy from a document of `items` items, and sees that all of them arrive.
template <typename Parse>
Work ParsingWork(std::size_t items, Layout layout, Parse parse)
{
    const auto document = std::make_shared<const std::string>(ScheduleDocument(items, kItemSize, layout));
    return {[=] {
        _VQMPolicy policy;
        parse(*document, policy);
        std::size_t count = 0;
        for (const _VQMSchdule& schedule : policy.listSchedule) {
            count += schedule.listContents.size();
        }
        const bool complete = count == items && policy.nImageDuration == 10 &&
                              policy.listSchedule.back().listContents.back().strName == ItemName(items - 1) + ".mp4" &&
                              policy.listSchedule.back().listContents.back().nSize == kItemSize;
        if (!complete) {
            throw std::runtime_error("the policy is not the document's");
        }
    }};
}
