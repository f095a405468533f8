#pragma once

#include <cstddef>
#include <deque>
#include <memory>

#include <Elementary.h>

#include "Companion/Model/Screen.h"

namespace companion {

/// The files of a schedule: a tick, or a cross and the reason. Below them stands how many more there are.
class FileListView {
public:
    explicit FileListView(Evas_Object* parent);
    ~FileListView();

    FileListView(const FileListView&) = delete;
    FileListView& operator=(const FileListView&) = delete;

    /// To be packed into a container, which then owns it.
    Evas_Object* Object() const { return list_; }

    /// Shows the files of `screen`. The place in the list stays where it was.
    void Show(std::shared_ptr<const Screen> screen);

private:
    /// What the toolkit keeps of a row. The row looks its number up in the screen that is shown by then.
    struct Row {
        const FileListView* owner;
        std::size_t number;
    };

    /// How many lines every row has for its texts; none for the detail that stands beside the name.
    struct RowLines {
        int name;
        int detail;
    };

    RowLines LinesOfRows() const;
    int RowHeight() const;
    static Evas_Object* AddRow(void* data, Evas_Object* list, const char* part);

    Evas_Object* list_;
    Elm_Genlist_Item_Class* rowClass_;
    std::shared_ptr<const Screen> screen_;
    RowLines lines_{1, 0};
    int rowHeight_ = 0;    ///< of the rows that are there
    std::deque<Row> rows_; ///< by number; they stay, so that the toolkit may refer to them
};

} // namespace companion
