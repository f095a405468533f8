#pragma once

#include <cstddef>
#include <new>

#include <gtest/gtest.h>

#include "Tests/Support/AllocationFault.h"
#include "Tests/Support/Recorder.h"
#include "Tests/VQMSerialize/ParserFault.h"

/// How an operation ended.
enum class Outcome {
    Done,    ///< true
    Refused, ///< false
    Thrown,  ///< `std::bad_alloc`
};

/// How often each of them came.
struct Outcomes {
    std::size_t refused = 0;
    std::size_t thrown = 0;
};

template <typename Operation>
Outcome OutcomeOf(Operation&& operation)
{
    try {
        return operation() ? Outcome::Done : Outcome::Refused;
    } catch (const std::bad_alloc&) {
        return Outcome::Thrown;
    }
}

/// Runs `round` with a fault at the n-th allocation, for every n until there is none any more.
/// `round` takes a function that runs one operation under the fault and returns its `Outcome`;
/// everything else in it has memory. A round has to release all that it allocates.
template <typename Fail, typename HasFailed, typename Round>
Outcomes ForEachFault(Fail fail, HasFailed hasFailed, Round round)
{
    constexpr std::size_t kMany = 5000;
    Outcomes outcomes;
    for (std::size_t n = 1; n < kMany; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        recorder::Clear();
        const std::size_t blocks = allocation_fault::BlocksInUse();
        bool failed = false;
        round([&](auto&& operation) {
            fail(n);
            const Outcome outcome = OutcomeOf(operation);
            failed = hasFailed();
            fail(0);
            // With a fault it may be done all the same: some memory is only for speed.
            EXPECT_TRUE(outcome == Outcome::Done || failed) << "nothing else fails";
            outcomes.refused += outcome == Outcome::Refused ? 1 : 0;
            outcomes.thrown += outcome == Outcome::Thrown ? 1 : 0;
            return outcome;
        });
        recorder::Clear();
        EXPECT_EQ(allocation_fault::BlocksInUse(), blocks);
        EXPECT_EQ(parser_fault::BlocksInUse(), 0U);
        if (!failed || testing::Test::HasFailure()) {
            return outcomes;
        }
    }
    ADD_FAILURE() << "it never got through";
    return outcomes;
}

/// Every `operator new`.
template <typename Round>
Outcomes ForEachAllocation(Round round)
{
    return ForEachFault(allocation_fault::FailNth, allocation_fault::HasFailed, round);
}

/// Every allocation of the XML parser.
template <typename Round>
Outcomes ForEachParserAllocation(Round round)
{
    bool armed = false;
    return ForEachFault(
        [&armed](std::size_t n) {
            parser_fault::faults().failingAllocation = n;
            armed = n != 0;
        },
        [&armed] { return armed && parser_fault::faults().failingAllocation == 0; }, round);
}
