#pragma once

#include <cstddef>
#include <string>

/// The file name, without its extension, of an item. No two are the same.
std::string ItemName(std::size_t item);

/// Each item has a line of its own, as the format's documentation shows it, or each element has.
enum class Layout { LineForItem, LineForElement };

/// As many as a shop may show in a period.
constexpr std::size_t kItemsOfAPeriod = 1000;

/// A schedule document: about 200 bytes for each item, every item announced with `itemSize` bytes. The items name
/// `files` files in turn; 0: each its own.
std::string ScheduleDocument(std::size_t items, std::size_t itemSize, Layout layout,
                             std::size_t itemsOfAPeriod = kItemsOfAPeriod, std::size_t files = 0);
