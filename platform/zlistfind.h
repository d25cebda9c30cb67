#pragma once

#include "platform/namefinder.h"

#include <QObject>

#include <functional>
#include <memory>

class QKeyEvent;
class QTimer;
class ZBubble;
class ZListBox;

/// Lets a list's rows be found by the keys of their first letters; it sees the list's keys first.
///
/// Letters of a keyboard, and the digits from 1 to 9, make the row current whose name begins with
/// them (NameFinder::find()). A bubble over the list says what of the name that is, or, with a
/// sign, what no name begins with. SilenceTime after the last of these keys, or with the clear key,
/// the search is over; any other key ends it too and does what it always does.
///
/// While pages are turned quickly, each within PagingTime of the one before, a bubble shows the
/// first letter of the current row.
class ZListFind : public QObject
{
    Q_OBJECT

public:
    static constexpr int SilenceTime = 1500; ///< milliseconds
    static constexpr int PagingTime = 400;   ///< milliseconds

    /// It is the list's. `nameOf` gives the names of the rows that can be found.
    ZListFind(ZListBox* list, NameFinder::NameOf nameOf);
    ~ZListFind() override;

    /// While `says` does, digits are for something else and left alone.
    void setDigitsAreTaken(std::function<bool()> says) { digitsAreTaken_ = std::move(says); }
    /// How long a search lasts after a key, in milliseconds. Keys that say when they were pressed
    /// are compared by that; the time that they take to arrive is no matter.
    void setSilenceTime(int milliseconds);
    /// Whether a search is going on, its bubble shown.
    bool isFinding() const { return isFinding_; }
    /// What shows it; nullptr before the first.
    const ZBubble* bubble() const { return bubble_; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool takeKey(const QKeyEvent& event);
    QString askedBy(const QKeyEvent& event, int code) const;
    bool goesOn(const QKeyEvent& event) const;
    void find(const QKeyEvent& event, const QString& character);
    void goTo(int row);
    void watchPages(const QKeyEvent& event, int code);
    void showLetter();
    void timeIsOver();
    void end();
    ZBubble* theBubble();

    ZListBox* list_;
    NameFinder::NameOf nameOf_;
    std::function<bool()> digitsAreTaken_ = [] { return false; };
    std::unique_ptr<NameFinder> finder_; ///< made with the first key
    ZBubble* bubble_ = nullptr;
    QTimer* timer_;
    int silenceTime_ = SilenceTime;
    bool isFinding_ = false;
    bool endedByTime_ = false;
    bool isMoving_ = false; ///< the row is changed from here
    bool isPaging_ = false; ///< pages turn quickly
    int heldKey_ = 0;       ///< the toolkit's key that was taken, whose repeats mean nothing
    quint64 pressedAt_ = 0; ///< when the last key of the search was; 0: it did not say
    quint64 pageTurnedAt_ = 0;
};
