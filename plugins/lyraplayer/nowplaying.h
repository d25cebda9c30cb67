#pragma once

#include <QRect>
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

signals:
    /// A tap on the picture or the title.
    void listWanted();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    /// Where things are, from the top; the picture takes what the rest leaves.
    struct Places {
        QRect head, picture, title, artist, bar, times, back, play, forth, volume;
    };
    Places places() const;
    void paintHead(QPainter& painter, const QRect& area) const;
    void paintTexts(QPainter& painter, const Places& place) const;
    void paintProgress(QPainter& painter, const Places& place) const;
    void paintVolume(QPainter& painter, const QRect& area) const;

    Player& player_;
};
