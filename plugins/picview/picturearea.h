#pragma once

#include "plugins/picview/pictureplace.h"
#include "plugins/support/picture.h"

#include <QFile>
#include <QTimer>
#include <QWidget>

#include <memory>

class QMovie;

/// Shows one picture, or says why it cannot.
class PictureArea : public QWidget
{
    Q_OBJECT

public:
    explicit PictureArea(QWidget* parent);
    ~PictureArea() override;

    /// Another picture comes soon: what is shown stays for that long.
    void expect();
    /// Shows a picture fitted, or filling the area if the one before does. `path` is what it is
    /// played from if it is animated, `quarterTurns` by how much it was turned.
    void show(const Picture& picture, const QString& path, int quarterTurns);
    /// Puts the same picture with more pixels in place of the one shown.
    void refine(const Picture& picture);
    /// Turns what is shown clockwise by quarter turns; fewer of its pixels may be at hand then.
    void turn(int quarterTurns);
    /// Shows a few words over the picture for a while.
    void say(const QString& words);
    const QString& words() const { return words_; }
    /// The pixels of the display that a picture can be seen with at most.
    QSize box() const;

    const QString& problem() const { return picture_.problem; }
    const PicturePlace& place() const { return place_; }
    bool isLoading() const { return loading_; }
    /// Whether there is more in the picture's file than is at hand for the scale.
    bool wantsDetail() const;

    /// As those of PicturePlace, with the picture drawn anew.
    bool zoomIn();
    bool zoomOut();
    void fit();
    void fill();
    void showOriginalSize();
    bool scroll(int right, int down);

signals:
    /// There is more or less room for a picture.
    void resized();
    void tapped(bool rightHalf);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void put(const Picture& picture);
    void play(const QString& path);
    void paintPicture(QPainter& painter);
    void paintWords(QPainter& painter, const QString& words);
    const QImage& imageFor(double ratio);

    Picture picture_;
    PicturePlace place_;
    QFile movieFile_; ///< what the movie reads
    std::unique_ptr<QMovie> movie_;
    QImage reduced_; ///< the picture halved as often as suits the scale
    int halvings_ = 0;
    int quarterTurns_ = 0;
    QTimer patience_; ///< before it says that it is loading
    QTimer saying_;   ///< runs while the words are shown
    QString words_;
    bool loading_ = false;
    bool refined_ = false;
    QPoint pressedAt_;
    QPoint draggedTo_;
    bool dragged_ = false;
};
