#pragma once

#include "tools/sys_gui/move.h"
#include "widgets/boxframe.h"

#include <QString>

/// The box of a move: a title bar with an icon, a text, and how far the move is. It looks like the
/// boxes of the program that starts the move.
class MoveBox : public BoxFrame
{
    Q_OBJECT

public:
    /// `icon` is the path of a picture file; a missing one leaves the title alone.
    MoveBox(const QString& title, const QString& text, const QString& icon);

    void showProgress(const MoveProgress& progress);
    /// Shows a message in place of the text and the progress, until a key or a tap closes it.
    void showFailure(const QString& message);

    /// Makes the font of the boxes known, which lies in the folder above that of the icon.
    static void addFont(const QString& icon);

signals:
    void closed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QString progressText() const;

    MoveProgress progress_;
    bool hasFailed_ = false;
};
