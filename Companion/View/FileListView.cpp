#include "Companion/View/FileListView.h"

#include <algorithm>
#include <utility>

#include "Companion/Model/Language.h"
#include "Companion/Model/Wording.h"
#include "Companion/View/Text.h"

namespace companion {

namespace {

/// Rows that are added before the loop runs again.
constexpr std::size_t kRowsAtOnce = 500;

// On a screen of 1080 lines.
constexpr int kOneLine = 46;
constexpr int kTwoLines = 82;
constexpr int kThreeLines = 116;
/// Longer reasons take two lines.
constexpr std::size_t kLongReason = 58;

// Of a row.
constexpr int kRowWidth = 1120;
constexpr int kMarkWidth = 56;
constexpr int kNameHeight = 44;
constexpr int kTextLeft = 68;
constexpr int kSizeWidth = 400; ///< beside the name

int WindowHeight(Evas_Object* object)
{
    int height = 0;
    evas_output_size_get(evas_object_evas_get(object), nullptr, &height);
    return std::max(height, 1);
}

void AddRowText(Evas_Object* row, const TextStyle& style, const std::string& text, const Eina_Rectangle& place)
{
    Text(row, style, place).Set(text);
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
    if (filling_ != nullptr) {
        ecore_idler_del(filling_);
    }
    elm_genlist_item_class_free(rowClass_);
}

void FileListView::Show(std::shared_ptr<const Screen> screen)
{
    screen_ = std::move(screen);
    const int rowHeight = RowHeight();
    if (rowHeight != rowHeight_ || elm_genlist_items_count(list_) > screen_->files.size()) {
        elm_genlist_clear(list_);
        rowHeight_ = rowHeight;
    }
    elm_genlist_realized_items_update(list_);
    elm_object_focus_allow_set(list_, screen_->files.empty() ? EINA_FALSE : EINA_TRUE);
    Fill();
}

int FileListView::RowHeight() const
{
    std::size_t longest = 0;
    for (const FileLine& file : screen_->files) {
        longest = std::max(longest, file.reason.size());
    }
    const int height = longest > kLongReason ? kThreeLines : longest > 0 ? kTwoLines : kOneLine;
    return height * WindowHeight(list_) / 1080;
}

void FileListView::Fill()
{
    std::size_t count = elm_genlist_items_count(list_);
    const std::size_t end = std::min(count + kRowsAtOnce, screen_->files.size());
    for (; count < end; ++count) {
        if (rows_.size() == count) {
            rows_.push_back({this, count});
        }
        elm_genlist_item_append(list_, rowClass_, &rows_[count], nullptr, ELM_GENLIST_ITEM_NONE, nullptr, nullptr);
    }
    if (count < screen_->files.size() && filling_ == nullptr) {
        filling_ = ecore_idler_add(OnIdle, this);
    }
}

Eina_Bool FileListView::OnIdle(void* data)
{
    auto* const self = static_cast<FileListView*>(data);
    self->Fill();
    if (elm_genlist_items_count(self->list_) < self->screen_->files.size()) {
        return ECORE_CALLBACK_RENEW;
    }
    self->filling_ = nullptr;
    return ECORE_CALLBACK_CANCEL;
}

Evas_Object* FileListView::AddRow(void* data, Evas_Object* list, const char* /*part*/)
{
    const auto [self, number] = *static_cast<const Row*>(data);
    if (number >= self->screen_->files.size()) {
        return nullptr;
    }
    const FileLine& file = self->screen_->files[number];
    Evas_Object* const row = elm_grid_add(list);
    const int height = self->rowHeight_ * 1080 / WindowHeight(list);
    elm_grid_size_set(row, kRowWidth, height);
    evas_object_size_hint_min_set(row, 0, self->rowHeight_);
    const Colour colour = !file.complete ? kBad : file.reason.empty() ? kGood : kOdd;
    AddRowText(row, {36, colour, true, Align::kCenter}, file.complete ? "✓" : "✗", {0, 0, kMarkWidth, kNameHeight + 4});
    const std::string detail = DetailText(file);
    const int width = kRowWidth - kTextLeft;
    if (height < kTwoLines) {
        AddRowText(row, {32, kText}, file.name, {kTextLeft, 0, width - kSizeWidth, height});
        AddRowText(row, {kSmallestText, kQuietText, false, Align::kEnd}, detail,
                   {kTextLeft + width - kSizeWidth, 2, kSizeWidth, height - 2});
    } else {
        AddRowText(row, {32, kText}, file.name, {kTextLeft, 0, width, kNameHeight});
        AddRowText(row, {kSmallestText, kQuietText}, detail, {kTextLeft, kNameHeight, width, height - kNameHeight});
    }
    elm_object_access_info_set(row, (file.name + ": " + detail).c_str());
    return row;
}

} // namespace companion
