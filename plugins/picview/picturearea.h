#pragma once

#include "plugins/picview/picture.h"
#include "plugins/picview/pictureplace.h"

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
    /// Shows a picture fitted. `path` is what it is played from if it is animated.
    void show(const Picture& picture, const QString& path);
    /// Puts the same picture with more pixels in place of the one shown.
    void refine(const Picture& picture);
    /// The pixels of the display that a picture can be seen with at most.
    QSize box() const;

    const QString& problem() const { return picture_.problem; }
    const PicturePlace& place() const { return place_; }
    bool isLoading() const { return loading_; }
    /// Whether there is more in the picture's file than is at hand for the scale.
    bool wantsDetail() const;

    bool zoomIn();
    bool zoomOut();
    void fit();
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
    const QImage& imageFor(double ratio);

    Picture picture_;
    PicturePlace place_;
    QFile movieFile_; ///< what the movie reads
    std::unique_ptr<QMovie> movie_;
    QImage reduced_; ///< the picture halved as often as suits the scale
    int halvings_ = 0;
    QTimer patience_; ///< before it says that it is loading
    bool loading_ = false;
    bool refined_ = false;
    QPoint pressedAt_;
    QPoint draggedTo_;
    bool dragged_ = false;
};
