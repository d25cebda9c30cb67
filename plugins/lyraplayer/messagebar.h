#pragma once

#include <QStringList>
#include <QWidget>

/// A line or a few, with a sign beside them, that say what has gone wrong; away while there is
/// nothing to say. What does not fit on MaxLines lines is cut off.
class MessageBar : public QWidget
{
    Q_OBJECT

public:
    static constexpr int MaxLines = 4;

    explicit MessageBar(QWidget* parent);

    void setText(const QString& text);
    const QString& text() const { return text_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void breakLines();

    QString text_;
    QStringList lines_;
};
