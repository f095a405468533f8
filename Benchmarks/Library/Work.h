#pragma once

#include <cstddef>
#include <functional>

#include "Benchmarks/Library/ScheduleDocument.h"

/// What is measured: the same work, done by the product or by what it is held against.
struct Work {
    std::function<void()> run;
    /// A run's time and instructions are divided by this before they are printed.
    double units = 1;
    /// Done in turns with `run`; its cost is taken off. Empty: nothing is.
    std::function<void()> without = nullptr;
};

/// Prepares a work of a size; what the size counts is the work's own matter. Preparing is not measured.
using MakeWork = Work (*)(std::size_t size);

// A schedule document of `size` items in memory, into a policy. ParseX.cpp has the one of X. The
// product's policy is copied out of the parser's, or taken over, as the content check does.
Work ParseWithProduct(std::size_t size, Layout layout);
Work ParseAndTakeOver(std::size_t size, Layout layout);
Work ParseWithExpat(std::size_t size, Layout layout);
Work ParseWithPugixml(std::size_t size, Layout layout);
Work ParseWithLibxml2(std::size_t size, Layout layout);

// The linter over a schedule document of `size` items, in periods of 1,000 or in a single one, and
// the library's own parse of the same document.
Work LintPeriods(std::size_t size);
Work LintOnePeriod(std::size_t size);
Work ParsePeriods(std::size_t size);
Work ParseOnePeriod(std::size_t size);

// One dimension of the input of `size`: attributes in a tag, bytes of a table's cell, of a name that
// is misspelt, names that it may have been meant for, files of a report.
Work LintAttributes(std::size_t size);
Work ShowLongCell(std::size_t size);
Work SuggestForLongName(std::size_t size);
Work SuggestAmongMany(std::size_t size);
Work RenderCheckAsJson(std::size_t size);

// A file of `size` bytes into a buffer, in units as the product's reader uses.
Work ReadWithProduct(std::size_t size);
Work ReadWithSystemCalls(std::size_t size);
Work ReadWithStream(std::size_t size);
/// Open, one read, close: of up to 4096 bytes, with a stream and with system calls.
Work ReadWithBareStream(std::size_t size);
Work ReadAtOnce(std::size_t size);

// The content check over `size` files, in directories of its own in /opt.

/// What it does beyond reading the schedule.
Work CheckFiles(std::size_t size);
/// With reading the schedule.
Work CheckAll(std::size_t size);
/// The same of `size` items that name a fifth as many files.
Work CheckRepeated(std::size_t size);
Work CheckWithStat(std::size_t size);
Work CheckWithFind(std::size_t size);

// `size` texts to numbers.
Work ScanInts(std::size_t size);
Work ScanIntsFromChars(std::size_t size);
Work ScanSizes(std::size_t size);
Work ScanSizesFromChars(std::size_t size);
Work ScanDoubles(std::size_t size);
Work ScanDoublesFromChars(std::size_t size);

/// `size` log lines.
Work LogLines(std::size_t size);
