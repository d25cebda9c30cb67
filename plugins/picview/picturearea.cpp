#include "plugins/picview/picturearea.h"

#include "files/regularfile.h"
#include "platform/screenscale.h"
#include "platform/zskinservice.h"
#include "plugins/support/notice.h"
#include "plugins/support/plugintexts.h"

#include <QMouseEvent>
#include <QMovie>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace
{

/// Milliseconds after which one wants to know what takes so long.
constexpr int LoadingDelay = 300;
/// For how long a few words are shown, milliseconds.
constexpr int WordsTime = 1500;
constexpr int SquareSide = 8;

/// What transparent pictures are shown on: black or white alone would hide some of them.
QBrush chequered()
{
    static const QPixmap squares = [] {
        QPixmap pixmap(2 * SquareSide, 2 * SquareSide);
        pixmap.fill(QColor(0x66, 0x66, 0x66));
        QPainter painter(&pixmap);
        painter.fillRect(0, 0, SquareSide, SquareSide, QColor(0x99, 0x99, 0x99));
        painter.fillRect(SquareSide, SquareSide, SquareSide, SquareSide, QColor(0x99, 0x99, 0x99));
        return pixmap;
    }();
    return QBrush(squares);
}

} // namespace

PictureArea::PictureArea(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    patience_.setSingleShot(true);
    patience_.setInterval(LoadingDelay);
    connect(&patience_, &QTimer::timeout, this, [this] { update(); });
    saying_.setSingleShot(true);
    saying_.setInterval(WordsTime);
    connect(&saying_, &QTimer::timeout, this, [this] { say(QString()); });
}

PictureArea::~PictureArea() = default;

void PictureArea::expect()
{
    loading_ = true;
    patience_.start();
}

void PictureArea::show(const Picture& picture, const QString& path, int quarterTurns)
{
    movie_.reset();
    quarterTurns_ = quarterTurns;
    put(picture);
    refined_ = false;
    place_.setPicture(picture.problem.isEmpty() ? picture.size : QSize());
    if (picture.animated)
        play(path);
}

void PictureArea::refine(const Picture& picture)
{
    put(picture);
    refined_ = true;
}

void PictureArea::turn(int quarterTurns)
{
    constexpr int WholeTurn = 4;
    quarterTurns_ = (quarterTurns_ + quarterTurns + WholeTurn) % WholeTurn;
    picture_.image = turnedBy(picture_.image, quarterTurns);
    if (quarterTurns % 2 != 0)
        picture_.size.transpose();
    reduced_ = QImage();
    place_.setPicture(picture_.problem.isEmpty() ? picture_.size : QSize());
    update();
}

void PictureArea::say(const QString& words)
{
    words_ = words;
    if (!words.isEmpty())
        saying_.start();
    update();
}

void PictureArea::put(const Picture& picture)
{
    loading_ = false;
    patience_.stop();
    reduced_ = QImage();
    picture_ = picture;
    update();
}

QSize PictureArea::box() const
{
    return size() * ScreenScale::density();
}

bool PictureArea::wantsDetail() const
{
    if (refined_ || movie_ || picture_.image.isNull())
        return false;
    const double wanted = place_.target().width() * ScreenScale::density();
    return picture_.image.width() + 1 < std::min(double(picture_.size.width()), wanted);
}

void PictureArea::play(const QString& path)
{
    movieFile_.close();
    // If it cannot be opened again, the picture stays as it is.
    if (!openRegular(movieFile_, path))
        return;
    movie_ = std::make_unique<QMovie>(&movieFile_);
    connect(movie_.get(), &QMovie::frameChanged, this, [this] {
        const QImage frame = movie_->currentImage();
        if (frame.isNull())
            return;
        picture_.image = turnedBy(frame, quarterTurns_);
        reduced_ = QImage();
        update();
    });
    movie_->start();
}

bool PictureArea::zoomIn()
{
    update();
    return place_.zoomIn();
}

bool PictureArea::zoomOut()
{
    update();
    return place_.zoomOut();
}

void PictureArea::fit()
{
    place_.fit();
    update();
}

void PictureArea::fill()
{
    place_.fill();
    update();
}

void PictureArea::showOriginalSize()
{
    place_.showOriginalSize();
    update();
}

bool PictureArea::scroll(int right, int down)
{
    update();
    return place_.scroll(right, down);
}

void PictureArea::resizeEvent(QResizeEvent* /*event*/)
{
    place_.setArea(size());
    emit resized();
}

void PictureArea::mousePressEvent(QMouseEvent* event)
{
    pressedAt_ = draggedTo_ = event->position().toPoint();
    dragged_ = false;
    event->accept();
}

void PictureArea::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint now = event->position().toPoint();
    if ((now - pressedAt_).manhattanLength() > ZSkinService::TapSlop)
        dragged_ = true;
    if (dragged_)
        scroll(draggedTo_.x() - now.x(), draggedTo_.y() - now.y());
    draggedTo_ = now;
    event->accept();
}

void PictureArea::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    if (!dragged_)
        emit tapped(event->position().x() >= width() / 2.0);
}

void PictureArea::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    painter.setPen(Qt::white);
    if (!picture_.image.isNull())
        paintPicture(painter);
    else if (!picture_.problem.isEmpty())
        paintNotice(painter, rect(), picture_.problem);
    if (loading_ && !patience_.isActive())
        paintWords(painter, pluginTexts().loading);
    else if (!words_.isEmpty())
        paintWords(painter, words_);
}

void PictureArea::paintWords(QPainter& painter, const QString& words)
{
    const QRect label(0, height() - ZSkinService::HeaderHeight, width(),
                      ZSkinService::HeaderHeight);
    painter.fillRect(label, QColor(0, 0, 0, 0xa0));
    painter.setPen(Qt::white);
    constexpr int Margin = 4;
    painter.drawText(label, Qt::AlignCenter,
                     painter.fontMetrics().elidedText(words, Qt::ElideRight, width() - 2 * Margin));
}

void PictureArea::paintPicture(QPainter& painter)
{
    const QRectF target = place_.target();
    if (picture_.image.hasAlphaChannel())
        painter.fillRect(target.intersected(QRectF(rect())), chequered());
    const double ratio = target.width() * ScreenScale::density() / picture_.image.width();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, imageFor(ratio));
}

const QImage& PictureArea::imageFor(double ratio)
{
    // The painter looks at four pixels for each that it draws, so it must not leave out many.
    const int halvings = ratio < 1 ? int(std::floor(-std::log2(ratio) + 0.001)) : 0;
    if (halvings <= 0)
        return picture_.image;
    if (reduced_.isNull() || halvings_ != halvings) {
        const QSize size = picture_.image.size() / double(1U << unsigned(halvings));
        reduced_ = picture_.image.scaled(size.expandedTo(QSize(1, 1)), Qt::IgnoreAspectRatio,
                                         Qt::SmoothTransformation);
        halvings_ = halvings;
    }
    return reduced_;
}
