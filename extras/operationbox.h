#pragma once

#include "platform/zaccessiblebox.h"
#include "widgets/boxframe.h"

#include <QString>
#include <QStringList>

/// The box in the middle of the screen that tells how far an operation is. The right soft key, or a
/// tap on the key bar, asks for a cancel. Everything below it on the screen is inert while it is
/// shown. It keeps its height while it is up, so that nothing jumps.
class OperationBox : public BoxFrame, public ZSpokenBox
{
    Q_OBJECT
    Q_PROPERTY(QStringList lines READ lines)
    Q_PROPERTY(int percent READ percent)

public:
    explicit OperationBox(const QString& title);

    /// Each line in its place, cut in its middle if it is too long; 0 to 100 percent, or less than
    /// 0 for no bar. Shows the box, but not over a question that was asked since whoever has the
    /// box began to wait, whose keys it would keep away: then it comes up later.
    void showLines(const QStringList& lines, int percent);

    using BoxFrame::lines;
    int percent() const { return percent_; }

    ZBoxWords boxWords() const override;
    void chooseAnswer(int answer) override;

signals:
    void cancelled();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    int progressHeight() const;
    QString percentText() const;

    int percent_ = -1;
    int waitDepth_; ///< where it may come up
};
