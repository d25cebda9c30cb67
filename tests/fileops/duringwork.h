#pragma once

#include <QCoreApplication>
#include <QEvent>

#include <functional>
#include <utility>

/// Acts once while work lets the event loop run, as soon as a condition holds. The condition is
/// looked at whenever the work does so. Work that never does, or never gets that far, is found by
/// hasHappened().
class DuringWork : public QObject
{
public:
    DuringWork(std::function<bool()> condition, std::function<void()> action)
        : condition_(std::move(condition)), action_(std::move(action))
    {
        lookNextTime();
    }

    bool hasHappened() const { return happened_; }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        happened_ = condition_();
        happened_ ? action_() : lookNextTime();
        return true;
    }

private:
    // A timer, even one of no time, may have to wait for others.
    void lookNextTime() { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); }

    std::function<bool()> condition_;
    std::function<void()> action_;
    bool happened_ = false;
};
