#pragma once

#include <QObject>

#include <functional>

class FM;

/// Tells or asks the user something at the start: looks, once the first listing is painted, whether
/// it is wanted, and does it as soon as nothing else is above the main window. Belongs to that
/// window.
class AfterStart : public QObject
{
    Q_OBJECT

public:
    /// `isWanted` is asked once, `run` called at most once, both by the event loop. Of several the
    /// one that was made last comes first.
    AfterStart(FM* window, std::function<bool()> isWanted, std::function<void()> run);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void look();
    void runWhenFree();

    FM* window_;
    std::function<bool()> isWanted_;
    std::function<void()> run_;
    bool isDue_ = false; ///< it is wanted and has not been done
};
