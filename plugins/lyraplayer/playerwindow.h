#pragma once

#include "plugins/support/pluginwindow.h"

#include <QPixmap>

class MessageBar;
class NowPlaying;
class Player;
class QStackedWidget;
class TrackReader;
class ZListBox;
class ZListBoxItem;

/// The player's window: the track that plays, or the list of all, with the player's messages below.
/// Hiding it does not stop the music.
class PlayerWindow : public PluginWindow
{
    Q_OBJECT

public:
    explicit PlayerWindow(Player& player);
    ~PlayerWindow() override;

    /// Switches between the list and the track that plays.
    void showList(bool list);
    bool showsList() const;
    const ZListBox* list() const { return list_; }
    const NowPlaying* nowPlaying() const { return nowPlaying_; }

public slots:
    /// What other programs may ask for: "show", "next", "prew". Anything else is ignored.
    void take(const QByteArray& message);

protected:
    void keyPressed(int code) override;
    void leftSoftKey() override;
    void rightSoftKey() override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void fillList();
    ZListBoxItem* rowOf(int track);
    void drawMarks();
    void titleRead(int track, const QString& title);
    void addPages();
    void connectPlayer();
    void playRow(int row);
    /// Whether the highlight of the list is on another track than the one that plays.
    bool isOnAnotherTrack() const;
    /// Moves the mark in the list, and the highlight unless the user has it elsewhere.
    void follow(int track, int before);
    void showState();

    Player& player_;
    TrackReader* reader_;
    QStackedWidget* pages_ = nullptr;
    NowPlaying* nowPlaying_ = nullptr;
    ZListBox* list_ = nullptr;
    MessageBar* message_ = nullptr;
    QPixmap noMark_;
    QPixmap mark_; ///< stands before the track that plays
};
