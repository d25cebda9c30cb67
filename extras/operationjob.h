#pragma once

#include "extras/operation.h"
#include "extras/work.h"

#include <atomic>
#include <functional>
#include <memory>

class Deletion;
class Estimate;
class JournalIndex;
class Surveyor;
class TakingBack;
class Transfer;

/// What an operation is for who looks at it.
struct OperationView {
    Operation::State state = Operation::State::Surveying;
    SurveyResult survey;
    Conflict question;
    OperationProgress progress;
    Listed<Failure> failures;
    QList<SourceOutcome> outcomes;
    unsigned lacks = 0;
    int journalError = 0;
    QByteArray journal;
};

/// All that an operation works with. One thread at a time uses it, but for stop().
class OperationJob
{
public:
    using State = Operation::State;

    explicit OperationJob(const OperationRequest& request);
    ~OperationJob();

    /// Goes on with a journal, later: null, with errno set, if it cannot be had.
    static std::shared_ptr<OperationJob> finish(const QByteArray& journal);
    static std::shared_ptr<OperationJob> takeBack(const QByteArray& journal);

    const OperationRequest& request() const { return work_.request; }
    State state() const { return state_; }
    bool hasEnded() const { return state_ == State::Finished || state_ == State::Cancelled; }
    bool isBusy() const { return state_ == State::Surveying || state_ == State::Working; }

    void decide(qsizetype conflict, Answer answer);
    void decideForAll(Answer answer);
    void begin();
    void answer(Answer answer, bool forAll);

    /// Works for about that long, at least one piece.
    void run(int milliseconds);
    /// Works to the end; for what has been stopped.
    void runToEnd();

    enum class Stop { None, ForGood, Interrupt };
    /// From any thread: run() will bring it to its end.
    void stop(Stop how) { wantedStop_ = how; }

    OperationView view();

private:
    static std::shared_ptr<OperationJob> resumed(const QByteArray& journal);
    bool isWithoutPlace();
    void startWork(JournalIndex* known);
    void startTakingBack();
    void step();
    bool stepWork();
    void obeyStop();
    void end(State ended);
    void noteProgress();
    OperationProgress progress();
    QList<SourceOutcome> outcomes() const;

    Work work_;
    State state_ = State::Surveying;
    std::atomic<Stop> wantedStop_ = Stop::None;
    Stop stop_ = Stop::None;
    std::function<void()> first_; ///< what is done before all else
    std::unique_ptr<Surveyor> surveyor_;
    SurveyResult survey_;
    std::unique_ptr<JournalIndex> earlier_;
    std::unique_ptr<Transfer> transfer_;
    std::unique_ptr<Deletion> deletion_;
    std::unique_ptr<TakingBack> takingBack_;
    std::unique_ptr<Estimate> estimate_;
    qint64 askedSince_ = 0;
    qint64 mostBytesDone_ = 0;
};
