#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QList>
#include <QRect>
#include <QStringList>
#include <QWidget>

class Player;

/// A time as people read it: "4:05", "1:02:03".
QString clockText(double seconds);

/// The page that shows the track that plays. Its buttons, its bar and its picture can be tapped.
class NowPlaying : public QWidget
{
    Q_OBJECT

public:
    NowPlaying(Player& player, QWidget* parent);

    /// The picture of the music; a null one for a note in its place.
    void setCover(const QImage& cover);
    const QImage& cover() const { return cover_; }
    /// What stands below the picture, line by line.
    QStringList shownLines() const;
    /// The pixels of the display that a cover is seen with at most.
    QSize coverBox() const;

signals:
    /// A tap on the picture or the title.
    void listWanted();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    /// A text that is broken into as few lines as it needs.
    struct Text {
        QStringList lines;
        QFont font;
        QColor colour;
        int height() const;
    };
    /// Where things are, from the top; the picture takes what the rest leaves.
    struct Places {
        QRect head, picture, texts, bar, times, back, play, forth, volume;
    };
    Places places(const QList<Text>& texts) const;
    QList<Text> texts() const;
    void paintHead(QPainter& painter, const QRect& area) const;
    void paintPicture(QPainter& painter, const QRect& area) const;
    static void paintTexts(QPainter& painter, const QRect& area, const QList<Text>& texts);
    void paintProgress(QPainter& painter, const Places& place) const;
    void paintVolume(QPainter& painter, const QRect& area) const;

    Player& player_;
    QImage cover_;
};
