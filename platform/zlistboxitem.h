#pragma once

#include <QPixmap>
#include <QString>

#include <memory>
#include <vector>

class ZListBox;

/// What a row's layout string says. The language: "%I" the icon, "%M" the text with, behind it, its
/// width in pixels (none: what is left of the row), "%C" the check box; from left to right in this
/// order, each at most once. Anything else is skipped.
struct ZListRowLayout {
    bool icon = false;
    bool text = false;
    int textWidth = 0; ///< 0: what is left
    bool checkBox = false;

    /// The layout of a string; equal strings share one, which lives as long as the process.
    static const ZListRowLayout* of(const QString& layout);
};

/// What every item of a list has.
class ZListItem
{
public:
    /// A disabled item can be highlighted but not checked, and is drawn greyed.
    void setEnabled(bool enabled) { enabled_ = enabled; }
    bool isEnabled() const { return enabled_; }

protected:
    ~ZListItem() = default;

private:
    bool enabled_ = true;
};

/// A row of a ZListBox: pixmap, text lines and a check mark, arranged by a layout string. The box
/// that it is inserted into owns it. Kept small: a list may hold a hundred thousand.
class ZListBoxItem final : public ZListItem
{
public:
    ZListBoxItem(ZListBox* box, const QString& layout);

    /// The pixmap of a slot. Slot 0, the icon, is the only one there is; others are ignored.
    void setPixmap(int slot, const QPixmap& pixmap);
    QPixmap pixmap(int slot) const;

    /// Appends a sub-item to a text line. Of line 1 the first sub-item is the row's main text,
    /// shown as it is; the second is shown below it, in it a run of tabs moves what follows to the
    /// right edge. `pixmap` (may be nullptr) is drawn before the text and is copied.
    void appendSubItem(int line, const QString& text, bool separator,
                       const QPixmap* pixmap = nullptr);
    /// Puts another text in the place of one; does nothing if there is no such sub-item.
    void setSubItemText(int line, int index, const QString& text);
    /// The text of sub-item `index` (from 0) of a line; null if there is none. `found`, if given,
    /// says which.
    QString getSubItemText(int line, int index, bool* found = nullptr) const;
    int subItemCount(int line) const;

    const ZListRowLayout& layout() const { return *layout_; }
    /// Does nothing unless the row has a check box and is enabled.
    void setChecked(bool checked);
    bool isChecked() const { return checked_; }

private:
    struct SubItem {
        QString text;
        std::unique_ptr<QPixmap> pixmap;
        short line;
        bool separator;
    };

    const SubItem* subItem(int line, int index) const;

    friend class ZListRowPainter;

    ZListBox* box_;
    const ZListRowLayout* layout_;
    QPixmap icon_;
    std::vector<SubItem> subItems_;
    bool checked_ = false;
};
