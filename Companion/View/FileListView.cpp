#include "Companion/View/FileListView.h"

#include <algorithm>
#include <utility>

#include "Companion/Model/Language.h"
#include "Companion/Model/Wording.h"
#include "Companion/View/Text.h"

namespace companion {

namespace {

// On a screen of 1080 lines.
constexpr int kNameHeight = 44; ///< of a line of it
constexpr int kDetailHeight = 36;

// Lengths in bytes, of which a letter has one or more.
constexpr std::size_t kLongNameBeside = 30; ///< longer names stand above their details, not beside them
constexpr std::size_t kLongName = 52;       ///< longer names take two lines
constexpr std::size_t kLongReason = 58;     ///< longer reasons take two lines

// Of a row.
constexpr int kRowWidth = 1120;
constexpr int kMarkLeft = 12;
constexpr int kMarkWidth = 56;
constexpr int kTextLeft = 72;
constexpr int kTextRight = kRowWidth - 16;
constexpr int kSizeWidth = 400; ///< beside the name

int WindowHeight(Evas_Object* object)
{
    int height = 0;
    evas_output_size_get(evas_object_evas_get(object), nullptr, &height);
    return std::max(height, 1);
}

} // namespace

FileListView::FileListView(Evas_Object* parent)
    : list_(elm_genlist_add(parent)), rowClass_(elm_genlist_item_class_new())
{
    rowClass_->item_style = "full";
    rowClass_->func.content_get = AddRow;
    elm_genlist_homogeneous_set(list_, EINA_TRUE);
    elm_genlist_mode_set(list_, ELM_LIST_COMPRESS);
    elm_scroller_policy_set(list_, ELM_SCROLLER_POLICY_OFF, ELM_SCROLLER_POLICY_AUTO);
    elm_scroller_bounce_set(list_, EINA_FALSE, EINA_FALSE);
    evas_object_show(list_);
    // Otherwise the focus is invisible until it moves on.
    elm_config_first_item_focus_on_first_focusin_set(EINA_TRUE);
}

FileListView::~FileListView()
{
    elm_genlist_item_class_free(rowClass_);
}

void FileListView::Show(std::shared_ptr<const Screen> screen)
{
    screen_ = std::move(screen);
    lines_ = LinesOfRows();
    const int rowHeight = RowHeight();
    const std::size_t count = screen_->files.size() + (screen_->fileCount > screen_->files.size() ? 1 : 0);
    if (rowHeight != rowHeight_ || elm_genlist_items_count(list_) > count) {
        elm_genlist_clear(list_);
        elm_theme_flush(nullptr); // else the toolkit remembers how high such rows were
        rowHeight_ = rowHeight;
    }
    elm_genlist_realized_items_update(list_);
    elm_object_focus_allow_set(list_, screen_->files.empty() ? EINA_FALSE : EINA_TRUE);
    for (std::size_t number = elm_genlist_items_count(list_); number < count; ++number) {
        if (rows_.size() == number) {
            rows_.push_back({this, number});
        }
        elm_genlist_item_append(list_, rowClass_, &rows_[number], nullptr, ELM_GENLIST_ITEM_NONE, nullptr, nullptr);
    }
}

FileListView::RowLines FileListView::LinesOfRows() const
{
    std::size_t name = 0;
    std::size_t reason = 0;
    for (const FileLine& file : screen_->files) {
        name = std::max(name, file.name.size());
        reason = std::max(reason, file.reason.size());
    }
    const bool beside = reason == 0 && name <= kLongNameBeside;
    return {name > kLongName ? 2 : 1, beside ? 0 : reason > kLongReason ? 2 : 1};
}

int FileListView::RowHeight() const
{
    return (lines_.name * kNameHeight + lines_.detail * kDetailHeight) * WindowHeight(list_) / kLines;
}

Evas_Object* FileListView::AddRow(void* data, Evas_Object* list, const char* /*part*/)
{
    const auto [self, number] = *static_cast<const Row*>(data);
    const int nameHeight = self->lines_.name * kNameHeight;
    const int detailHeight = self->lines_.detail * kDetailHeight;
    Evas_Object* const row = AddGrid(list, kRowWidth, nameHeight + detailHeight);
    evas_object_size_hint_min_set(row, 0, self->rowHeight_);
    const auto add = [row](const TextStyle& style, const std::string& text, int left, int top, int width, int height) {
        Text(row, style, {left, top, width, height}).Set(text);
    };
    if (number >= self->screen_->files.size()) {
        add({32, kText}, MoreFilesText(*self->screen_), kTextLeft, 0, kTextRight - kTextLeft, nameHeight);
        return row;
    }
    const FileLine& file = self->screen_->files[number];
    const Colour colour = !file.complete ? kBad : file.reason.empty() ? kGood : kOdd;
    add({36, colour, true, Align::kCenter, 0.5}, file.complete ? "✓" : "✗", kMarkLeft, 0, kMarkWidth, nameHeight);
    const std::string detail = DetailText(file);
    const bool beside = detailHeight == 0;
    const int nameWidth = kTextRight - kTextLeft - (beside ? kSizeWidth : 0);
    add({32, kText, false, Align::kStart, 0.5}, file.name, kTextLeft, 0, nameWidth, nameHeight);
    if (beside) {
        add({kSmallestText, kQuietText, false, Align::kEnd, 0.5}, detail, kTextRight - kSizeWidth, 0, kSizeWidth,
            nameHeight);
    } else {
        add({kSmallestText, kQuietText}, detail, kTextLeft, nameHeight, nameWidth, detailHeight);
    }
    elm_object_access_info_set(row, (file.name + ": " + detail).c_str());
    return row;
}

} // namespace companion
