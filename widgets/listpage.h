#pragma once

#include "platform/zmainwidget.h"
#include "platform/zscreen.h"

#include <QFont>

class QKeyEvent;
class QLabel;
class ZListBox;
class ZSoftKey;

/// A page of the whole screen with a title, a list of rows in two lines, lines of text above and
/// below the list, and soft keys. A class of its own fills it and answers. Everything below the
/// page on the screen is inert while it is shown. All lengths are pixels of the screen.
class ListPage : public ZMainWidget
{
public:
    /// It is the page's.
    ZListBox* list() const { return list_; }

protected:
    /// Beside the text of a line, at both sides.
    static constexpr int LineMargin = 6;
    /// How wide the text of a line may be.
    static constexpr int LineRoom = ZScreen::Width - 2 * LineMargin;

    /// Hidden, and without rows. `name` is the object's; the second lines of rows have the size
    /// `detailSize`.
    ListPage(const QString& title, const char* name, const QFont& font, int detailSize);

    enum class Line { Above, Below };
    enum class Tone { Plain, Quiet };
    /// Adds an empty line of text as the last of those above or below the list. It is the page's.
    QLabel* addLine(Line place, Tone tone);

    /// Before what stands at the right edge of a second line.
    static constexpr int EndGap = 8;
    /// How wide the second line of a row without an icon may be.
    static int detailRoom();
    const QFont& detailFont() const { return detailFont_; }
    ZSoftKey& softKeys() const { return *keys_; }

    /// A soft key, ZSoftKey::Left or Right, was pressed or tapped.
    virtual void softKeyPressed(int key) = 0;
    /// Another key, which the list has left; not called for a key that repeats itself.
    virtual void otherKeyPressed(int /*code*/) {}

    void keyPressEvent(QKeyEvent* event) override;

private:
    QFont detailFont_;
    ZListBox* list_;
    ZSoftKey* keys_;
};
