#pragma once

#include "plugins/support/textpager.h"

#include <QWidget>

#include <vector>

/// Shows a text of any size in rows, with a bar that tells where one is in it.
///
/// A line whose first letter is of a script that is written from the right begins at the right.
///
/// Keys: Up, Down, "2" and "8" move by a row, PageUp, PageDown, "4" and "6" by a page, so do Left
/// and Right while lines are wrapped; else these move sideways. Home, "1", End and "7" go to the
/// start and the end. The wheel scrolls; a tap on the upper or lower half turns the page.
class TextPane : public QWidget
{
    Q_OBJECT

public:
    /// `source` must live as long as the pane.
    TextPane(const TextSource& source, QWidget* parent);

    /// Shown in place of a text without a byte, or, if `instead`, of any.
    void setNotice(const QString& text, bool instead = false);
    void setWrapping(bool on);
    bool isWrapping() const { return wrapping_; }
    /// Whether the end stays in view as the text grows, if it is in view then.
    void setFollowing(bool on) { following_ = on; }
    /// Does what a key says; false for a key without a meaning here.
    bool handleKey(int code);
    /// To be called when the text has changed.
    void refresh();

    void toStart();
    void toEnd();
    bool isAtEnd() const;
    /// How far one is: 0 at the start, 100 as soon as the end is in view.
    int percent() const;
    /// The rows in view.
    const QList<TextRow>& rows() const { return rows_; }

signals:
    /// The pane shows another part of the text.
    void moved();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    int pageRows() const;
    int pageStep() const;
    int rowHeight() const;
    int textWidth() const;
    int advanceOf(char32_t character);
    void moveBy(int rows);
    void moveSideways(int pixels);
    int widthOf(const TextRow& row) const;
    void showFrom(qint64 offset);
    void paintRow(QPainter& painter, const TextRow& row, int y) const;
    void paintCuts(QPainter& painter, const TextRow& row, int width, int y) const;
    void paintRun(QPainter& painter, const QString& run, bool rightToLeft, int distance,
                  int y) const;
    void paintBar(QPainter& painter) const;

    const TextSource& source_;
    TextPager pager_;
    std::vector<qint16> advances_; ///< of the first 65,536 characters; negative while unknown
    QList<TextRow> rows_;
    QString notice_;
    qint64 top_ = 0; ///< offset of the first row in view
    int passed_ = 0; ///< pixels of the beginnings of all rows that are out of view
    int wheel_ = 0;  ///< of the wheel's turn, what was not enough for a row
    bool noticeInstead_ = false;
    bool wrapping_ = true;
    bool following_ = false;
    bool wasAtEnd_ = true; ///< when it was last looked at
};
