#pragma once

#include "platform/zaccessiblebox.h"
#include "widgets/boxframe.h"

#include <QString>

/// The box in the middle of the screen that tells how sharing goes on and how it ended. While it
/// goes on, the right soft key or a tap on the key bar cancels; the end is closed by any key or
/// tap. Everything below it on the screen is inert while it is shown.
class ShareBox : public BoxFrame, public ZSpokenBox
{
    Q_OBJECT
    Q_PROPERTY(QString text READ text)
    Q_PROPERTY(int percent READ percent)
    Q_PROPERTY(bool result READ isResult)

public:
    ShareBox();

    /// Shows a text above a bar. `sent` of `size` bytes fill it; a size of 0 means that it is not
    /// known yet.
    void showProgress(const QString& text, qint64 sent, qint64 size);
    void showResult(const QString& text);

    QString text() const { return text_; }
    /// Percent sent; -1 while there is no telling, or no bar.
    int percent() const;
    bool isResult() const { return result_; }

    ZBoxWords boxWords() const override;
    void chooseAnswer(int answer) override;

signals:
    void cancelled();
    void closed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void showFitting();
    void say(const QString& text, bool isResult);
    QString progressText() const;

    QString text_;
    qint64 sent_ = 0;
    qint64 size_ = 0;
    bool result_ = false;
};
