#include "extras/operation.h"

#include "extras/journal.h"
#include "extras/operationjob.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace
{

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

/// How long a call of the system may take until whoever waits for it has the turn back.
constexpr Milliseconds Patience(100);
/// A journal's beginning is waited for so long.
constexpr Milliseconds PatienceToBegin(300);
/// What was stopped has so long to come to its end; an interrupted one is asked to hurry itself.
constexpr Milliseconds TimeToStop(400);
constexpr Milliseconds TimeToInterrupt(850);
/// A journal is told of a cancel in that time; if it takes longer nobody waits for it.
constexpr Milliseconds TimeToNote(150);

/// For the next start, if the program ends before the operation does. The thread that works on it
/// may come to nothing any more.
void noteCancelled(const QByteArray& journal)
{
    struct Note {
        std::mutex mutex;
        std::condition_variable ended;
        bool isDone = false;
    };
    const auto note = std::make_shared<Note>();
    try {
        std::thread([note, journal] {
            Journal::note(journal, JournalRecord::Type::Cancelled);
            const std::lock_guard lock(note->mutex);
            note->isDone = true;
            note->ended.notify_all();
        }).detach();
    } catch (const std::system_error&) {
        return;
    }
    std::unique_lock lock(note->mutex);
    note->ended.wait_for(lock, TimeToNote, [&note] { return note->isDone; });
}

/// Some work on a job in a thread of its own, which may hang in the system.
class Slice
{
public:
    Slice(std::shared_ptr<OperationJob> job, std::function<void(OperationJob&)> work)
        : shared_(std::make_shared<Shared>())
    {
        shared_->job = std::move(job);
        shared_->work = std::move(work);
        try {
            std::thread([shared = shared_] { run(*shared); }).detach();
        } catch (const std::system_error&) {
            run(*shared_);
        }
    }

    /// Waits for it, but not longer.
    bool isDone(Milliseconds most)
    {
        std::unique_lock lock(shared_->mutex);
        return shared_->ended.wait_for(lock, most, [this] { return shared_->isDone; });
    }
    /// When the slice is done its thread does the rest, too. False if it is done already.
    bool leave(const std::function<void(OperationJob&)>& rest)
    {
        const std::lock_guard lock(shared_->mutex);
        shared_->rest = rest;
        return !shared_->isDone;
    }

private:
    struct Shared {
        std::shared_ptr<OperationJob> job;
        std::function<void(OperationJob&)> work;
        std::mutex mutex;
        std::condition_variable ended;
        bool isDone = false;
        std::function<void(OperationJob&)> rest; ///< if somebody has left it
    };

    static void run(Shared& shared)
    {
        shared.work(*shared.job);
        {
            const std::lock_guard lock(shared.mutex);
            shared.isDone = true;
            shared.ended.notify_all();
            if (!shared.rest)
                return;
        }
        shared.rest(*shared.job);
    }

    std::shared_ptr<Shared> shared_;
};

} // namespace

int OperationProgress::percent() const
{
    const bool byBytes = bytesTotal > 0;
    const qint64 total = byBytes ? bytesTotal : entriesTotal;
    const qint64 done = byBytes ? bytesDone : entriesDone;
    if (total <= 0)
        return 0;
    const bool isAll = done >= total && entriesDone >= entriesTotal;
    return isAll ? 100 : int(std::clamp(double(done) / double(total) * 100, 0.0, 99.0));
}

class Operation::Private
{
public:
    explicit Private(std::shared_ptr<OperationJob> own)
        : job(std::move(own)), request(job->request())
    {
        view = job->view();
    }

    void start(std::function<void(OperationJob&)> work);
    bool wait(Milliseconds most);
    bool isOverdue() const;
    void leave();
    void obeyStop();

    std::shared_ptr<OperationJob> job; ///< null when it goes on by itself
    OperationRequest request;
    OperationView view; ///< as it was between two slices
    std::optional<Slice> slice;
    std::optional<Clock::time_point> stopped;
    Milliseconds timeToStop = TimeToStop;
    std::function<void()> lateEnd;
    bool takesBack = false;
    bool isCalledOff = false; ///< the operation itself, for good
};

void Operation::Private::start(std::function<void(OperationJob&)> work)
{
    slice.emplace(job, std::move(work));
}

/// Whether nothing works on the job any more.
bool Operation::Private::wait(Milliseconds most)
{
    if (!slice)
        return true;
    if (!slice->isDone(most))
        return false;
    slice.reset();
    view = job->view();
    return true;
}

bool Operation::Private::isOverdue() const
{
    return stopped && Clock::now() - *stopped >= timeToStop;
}

/// Nobody waits for it any longer. It still comes to its end as if somebody did: what is whole gets
/// its name when it is on the medium, and the journal stays until then.
void Operation::Private::leave()
{
    if (isCalledOff && !view.journal.isEmpty())
        noteCancelled(view.journal);
    const auto rest = [ended = lateEnd](OperationJob& left) {
        left.runToEnd();
        if (ended)
            ended();
    };
    if (!slice || !slice->leave(rest))
        Slice(job, rest);
    slice.reset();
    job.reset();
    view.state = State::Cancelled;
    view.journal.clear();
}

/// Nobody is asked any more: neither what a slice came to ask before it could hear of the stop, nor
/// whether to begin.
void Operation::Private::obeyStop()
{
    if (!stopped || slice)
        return;
    if (view.state == State::Surveyed) {
        job->run(0);
        view = job->view();
    } else if (view.state == State::Asking) {
        view.state = State::Working;
    }
}

Operation::Operation(const OperationRequest& request)
    : own_(std::make_unique<Private>(std::make_shared<OperationJob>(request)))
{
}

Operation::Operation(std::unique_ptr<Private> own) : own_(std::move(own)) {}

Operation::~Operation()
{
    const bool works = state() == State::Working || state() == State::Asking;
    if (works)
        cancel();
    while (works && !hasEnded())
        step(0);
    if (own_->job != nullptr)
        own_->job->stop(OperationJob::Stop::ForGood);
}

std::unique_ptr<Operation> Operation::finish(const QByteArray& journal)
{
    auto job = OperationJob::finish(journal);
    return std::unique_ptr<Operation>(
        job == nullptr ? nullptr : new Operation(std::make_unique<Private>(std::move(job))));
}

std::unique_ptr<Operation> Operation::takeBack(const QByteArray& journal)
{
    auto job = OperationJob::takeBack(journal);
    if (job == nullptr)
        return nullptr;
    auto own = std::make_unique<Private>(std::move(job));
    own->takesBack = true;
    return std::unique_ptr<Operation>(new Operation(std::move(own)));
}

Operation::State Operation::state() const
{
    return own_->view.state;
}

const OperationRequest& Operation::request() const
{
    return own_->request;
}

Operation::State Operation::step(int milliseconds)
{
    const bool isBusy = state() == State::Surveying || state() == State::Working;
    if (!isBusy)
        return state();
    if (!own_->slice)
        own_->start([milliseconds](OperationJob& job) { job.run(milliseconds); });
    own_->wait(Milliseconds(milliseconds) + Patience);
    own_->obeyStop();
    if (!hasEnded() && own_->isOverdue())
        own_->leave();
    return state();
}

const SurveyResult& Operation::survey() const
{
    return own_->view.survey;
}

void Operation::decide(qsizetype index, Answer answer)
{
    own_->job->decide(index, answer);
}

void Operation::decideForAll(Answer answer)
{
    own_->job->decideForAll(answer);
}

void Operation::begin()
{
    if (state() != State::Surveyed)
        return;
    own_->view.state = State::Working;
    own_->start([](OperationJob& job) { job.begin(); });
    own_->wait(PatienceToBegin);
}

const Conflict& Operation::question() const
{
    return own_->view.question;
}

void Operation::answer(Answer answer, bool forAll)
{
    if (state() != State::Asking)
        return;
    own_->job->answer(answer, forAll);
    own_->view.state = State::Working;
}

void Operation::cancel()
{
    stop(true);
}

void Operation::interrupt()
{
    stop(false);
}

void Operation::stop(bool isForGood)
{
    if (hasEnded() || own_->stopped)
        return;
    own_->stopped = Clock::now();
    own_->isCalledOff = isForGood && !own_->takesBack;
    own_->timeToStop = isForGood ? TimeToStop : TimeToInterrupt;
    own_->job->stop(isForGood ? OperationJob::Stop::ForGood : OperationJob::Stop::Interrupt);
    own_->obeyStop();
}

void Operation::setLateEnd(std::function<void()> ended)
{
    own_->lateEnd = std::move(ended);
}

OperationProgress Operation::progress() const
{
    return own_->view.progress;
}

const Listed<Failure>& Operation::failures() const
{
    return own_->view.failures;
}

const QList<SourceOutcome>& Operation::outcomes() const
{
    return own_->view.outcomes;
}

unsigned Operation::lacks() const
{
    return own_->view.lacks;
}

int Operation::journalError() const
{
    return own_->view.journalError;
}

QByteArray Operation::journal() const
{
    return own_->view.journal;
}
