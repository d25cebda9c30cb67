#pragma once

#include "extras/operation.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class OperationBox;

/// An operation with its screens, in the event loop: counting, the page before it, progress,
/// questions in between, the page after it. Each step returns when it is over.
class OperationRun : public QObject
{
    Q_OBJECT

public:
    OperationRun(std::unique_ptr<Operation> operation, const QString& title);
    ~OperationRun() override;

    const Operation& operation() const { return *operation_; }

    /// Counts what there is. False if that was cancelled.
    bool survey();
    /// Tells what is not plain, if anything is. False if the user went back, or nothing is left to
    /// be done.
    bool askBefore();
    /// Asks whether to delete what was counted; with another question than usual, and a line about
    /// it, if they are given.
    bool askToDelete(const QString& question = {}, const QString& note = {});
    /// Begins if it has not begun, goes on to the end or until it is cancelled, and tells what
    /// could not be done.
    void work();
    /// Those of `sources`, one for each of the operation, that are not done, or not wholly.
    QStringList left(const QStringList& sources) const;

private:
    bool isBusy() const;
    bool advance();
    void abandon();
    void showProgress();
    void cancel();
    void ask();
    void tellFailures();

    std::unique_ptr<Operation> operation_;
    QString title_;
    std::unique_ptr<OperationBox> box_;
    QElapsedTimer begun_;
    QElapsedTimer refreshed_;
    bool cancelling_ = false;
    Listed<Failure> told_; ///< by the page before
};
