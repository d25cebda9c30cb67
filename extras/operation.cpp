#include "extras/operation.h"

#include "extras/deletion.h"
#include "extras/estimate.h"
#include "extras/journals.h"
#include "extras/leftovers.h"
#include "extras/surveyor.h"
#include "extras/takingback.h"
#include "extras/transfer.h"
#include "extras/workplaces.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

namespace
{

qint64 milliseconds()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// A path of an entry does not end with "/"; what a user marked may.
OperationRequest tidied(OperationRequest request)
{
    for (QByteArray& source : request.sources) {
        while (source.size() > 1 && source.endsWith('/'))
            source.chop(1);
    }
    return request;
}

/// What a journal has to know from its beginning on.
QList<JournalRecord> recordsOf(const Work& work)
{
    const Decisions& decisions = work.decisions;
    QList<JournalRecord> records = placesOf(work.request);
    // Another entry that has taken a source's name by the next start must not go in its place.
    if (work.request.kind != OperationKind::Copy) {
        for (auto one = work.marks.constBegin(); one != work.marks.constEnd(); ++one) {
            JournalRecord record;
            record.type = JournalRecord::Type::Source;
            record.source = one.key();
            record.setMark(one.value());
            records.append(record);
        }
    }
    const auto add = [&records](JournalRecord::Type type, const QByteArray& from, Answer answer) {
        JournalRecord record;
        record.type = type;
        record.from = from;
        record.answer = answer;
        records.append(record);
    };
    for (auto one = decisions.byPath.constBegin(); one != decisions.byPath.constEnd(); ++one)
        add(JournalRecord::Type::Decision, one.key(), one.value());
    if (decisions.forAll)
        add(JournalRecord::Type::DecisionForAll, {}, *decisions.forAll);
    return records;
}

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
    explicit Private(const OperationRequest& request) : work(tidied(request)) {}

    void begin();
    bool resume(const QByteArray& path);
    bool isWithoutPlace();
    void startWork(JournalIndex* known);
    bool stepWork();
    void end(State ended);
    OperationProgress progress();

    Work work;
    State state = State::Surveying;
    std::unique_ptr<Surveyor> surveyor;
    SurveyResult survey;
    std::unique_ptr<JournalIndex> earlier;
    std::unique_ptr<Transfer> transfer;
    std::unique_ptr<Deletion> deletion;
    std::unique_ptr<TakingBack> takingBack;
    std::unique_ptr<Estimate> estimate;
    qint64 askedSince = 0;
    qint64 mostBytesDone = 0;
    bool isCancelling = false;
    bool isInterrupted = false; ///< that is to be gone on with
};

void Operation::Private::begin()
{
    work.journal = Journal::begin(work.request, recordsOf(work));
    if (work.journal == nullptr)
        work.journalError = errno;
    work.progress.bytesTotal = work.request.kind == OperationKind::Delete ? 0 : survey.bytes;
    work.progress.entriesTotal = survey.entries;
    startWork(nullptr);
}

bool Operation::Private::resume(const QByteArray& path)
{
    work.journal = Journal::resume(path);
    if (work.journal == nullptr)
        return false;
    earlier = std::make_unique<JournalIndex>(work.journal->descriptor());
    work.decisions = earlier->decisions();
    work.marks = earlier->marks();
    work.temporaryPrefix = work.journal->temporaryPrefix();
    // What it told there may have been done or not.
    if (earlier->isDamaged())
        work.failures.add({work.request.kind == OperationKind::Delete ? work.request.sources.first()
                                                                      : work.request.target,
                           Trouble::NotesDamaged, 0});
    return true;
}

/// Nothing can be done while a drive is away. The journal stays for when it is back.
bool Operation::Private::isWithoutPlace()
{
    const QList<Failure> missing = missingPlaces(*earlier);
    if (missing.isEmpty())
        return false;
    for (const Failure& one : missing)
        work.failures.add(one);
    work.outcomes.fill(SourceOutcome::Failed);
    work.journal.reset();
    state = State::Finished;
    return true;
}

void Operation::Private::startWork(JournalIndex* known)
{
    if (work.journal != nullptr)
        work.temporaryPrefix = work.journal->temporaryPrefix();
    else
        work.temporaryPrefix =
            TemporaryStart + QByteArray::number(QRandomGenerator::system()->generate64(), 36) + '-';
    const bool isByBytes = work.progress.bytesTotal > 0;
    estimate = std::make_unique<Estimate>(isByBytes ? work.progress.bytesTotal
                                                    : work.progress.entriesTotal);
    if (work.request.kind == OperationKind::Delete)
        deletion = std::make_unique<Deletion>(work, known != nullptr);
    else
        transfer = std::make_unique<Transfer>(work, known);
    state = State::Working;
}

/// False when the work has come to its end.
bool Operation::Private::stepWork()
{
    if (deletion != nullptr)
        return deletion->step();
    if (takingBack != nullptr)
        return takingBack->step();
    switch (transfer->step()) {
    case Transfer::Step::More:
        return true;
    case Transfer::Step::Ask:
        state = State::Asking;
        askedSince = milliseconds();
        return true;
    case Transfer::Step::Done:
        break;
    }
    return false;
}

void Operation::Private::end(State ended)
{
    state = ended;
    // What was taken back in part can be taken back further.
    const bool staysOpen = (takingBack != nullptr && takingBack->wasCancelled()) ||
                           (isInterrupted && ended == State::Cancelled);
    transfer.reset();
    deletion.reset();
    takingBack.reset();
    if (work.journal != nullptr && !staysOpen)
        work.journal->remove(ended == State::Finished);
    work.journal.reset();
    if (ended == State::Finished) {
        work.progress.bytesTotal = work.progress.bytesDone;
        work.progress.entriesTotal = work.progress.entriesDone;
    }
}

OperationProgress Operation::Private::progress()
{
    OperationProgress now = work.progress;
    if (transfer != nullptr)
        now.bytesDone += transfer->flushedBytes();
    now.bytesDone = mostBytesDone = std::max(mostBytesDone, now.bytesDone);
    now.bytesTotal = std::max(now.bytesTotal, now.bytesDone);
    now.entriesTotal = std::max(now.entriesTotal, now.entriesDone);
    if (estimate != nullptr) {
        now.bytesPerSecond = now.bytesTotal > 0 ? estimate->rate() : 0;
        now.secondsLeft = estimate->secondsLeft();
    }
    return now;
}

Operation::Operation(const OperationRequest& request) : own_(std::make_unique<Private>(request))
{
    own_->surveyor = std::make_unique<Surveyor>(own_->work);
}

Operation::Operation(std::unique_ptr<Private> own) : own_(std::move(own)) {}

Operation::~Operation()
{
    const bool works = own_->state == State::Working || own_->state == State::Asking;
    if (works)
        cancel();
    while (works && !hasEnded())
        step(0);
}

std::unique_ptr<Operation> Operation::finish(const QByteArray& journal)
{
    const std::optional<OperationRequest> request = requestOf(journal);
    if (!request)
        return nullptr;
    auto own = std::make_unique<Private>(*request);
    if (!own->resume(journal))
        return nullptr;
    if (own->isWithoutPlace())
        return std::unique_ptr<Operation>(new Operation(std::move(own)));
    if (request->kind != OperationKind::Delete) {
        TargetFolder target(request->target, own->work.temporaryPrefix);
        if (target.isOpen())
            clearLeftovers(*own->earlier, target, own->work.temporaryPrefix);
    }
    JournalIndex* earlier = own->earlier.get();
    own->startWork(earlier);
    return std::unique_ptr<Operation>(new Operation(std::move(own)));
}

std::unique_ptr<Operation> Operation::takeBack(const QByteArray& journal)
{
    const std::optional<OperationRequest> request = requestOf(journal);
    if (request && request->kind == OperationKind::Delete)
        errno = EOPNOTSUPP;
    if (!request || request->kind == OperationKind::Delete)
        return nullptr;
    auto own = std::make_unique<Private>(*request);
    if (!own->resume(journal))
        return nullptr;
    if (own->isWithoutPlace())
        return std::unique_ptr<Operation>(new Operation(std::move(own)));
    own->takingBack = std::make_unique<TakingBack>(own->work, *own->earlier);
    own->estimate = std::make_unique<Estimate>(own->work.progress.entriesTotal);
    own->state = State::Working;
    return std::unique_ptr<Operation>(new Operation(std::move(own)));
}

Operation::State Operation::state() const
{
    return own_->state;
}

const OperationRequest& Operation::request() const
{
    return own_->work.request;
}

Operation::State Operation::step(int milliseconds)
{
    const qint64 end = ::milliseconds() + milliseconds;
    do {
        if (own_->state == State::Surveying) {
            if (own_->isCancelling)
                own_->end(State::Cancelled);
            else if (!own_->surveyor->step())
                own_->state = State::Surveyed;
        } else if (own_->state == State::Working && !own_->stepWork()) {
            own_->end(own_->isCancelling ? State::Cancelled : State::Finished);
        }
    } while ((own_->state == State::Surveying || own_->state == State::Working) &&
             ::milliseconds() < end);
    if (own_->surveyor != nullptr)
        own_->survey = own_->surveyor->result();
    if (own_->surveyor != nullptr && own_->state != State::Surveying) {
        own_->work.marks = own_->surveyor->marks();
        own_->surveyor.reset();
    }
    if (own_->state == State::Working) {
        const OperationProgress now = own_->progress();
        own_->estimate->setTotal(now.bytesTotal > 0 ? now.bytesTotal : now.entriesTotal);
        own_->estimate->note(now.bytesTotal > 0 ? now.bytesDone : now.entriesDone,
                             ::milliseconds());
    }
    return own_->state;
}

const SurveyResult& Operation::survey() const
{
    return own_->survey;
}

void Operation::decide(qsizetype index, Answer answer)
{
    own_->work.decisions.byPath.insert(own_->survey.conflicts.first[index].source, answer);
}

void Operation::decideForAll(Answer answer)
{
    own_->work.decisions.forAll = answer;
}

void Operation::begin()
{
    if (own_->state == State::Surveyed)
        own_->begin();
}

const Conflict& Operation::question() const
{
    return own_->transfer->question();
}

void Operation::answer(Answer answer, bool forAll)
{
    if (own_->state != State::Asking)
        return;
    JournalRecord record;
    record.type = forAll ? JournalRecord::Type::DecisionForAll : JournalRecord::Type::Decision;
    record.answer = answer;
    if (forAll) {
        own_->work.decisions.forAll = answer;
    } else {
        record.from = question().source;
        own_->work.decisions.byPath.insert(record.from, answer);
    }
    if (own_->work.journal != nullptr)
        own_->work.journal->add(record);
    own_->estimate->skip(milliseconds() - own_->askedSince);
    own_->transfer->goOn();
    own_->state = State::Working;
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
    if (hasEnded() || own_->isCancelling)
        return;
    own_->isCancelling = true;
    own_->isInterrupted = !isForGood;
    if (own_->state == State::Surveyed) {
        own_->end(State::Cancelled);
        return;
    }
    if (own_->transfer != nullptr)
        own_->transfer->cancel(isForGood);
    if (own_->deletion != nullptr)
        own_->deletion->cancel();
    if (own_->takingBack != nullptr)
        own_->takingBack->cancel();
    if (own_->state == State::Asking)
        own_->state = State::Working;
}

OperationProgress Operation::progress() const
{
    return own_->progress();
}

const Listed<Failure>& Operation::failures() const
{
    return own_->work.failures;
}

const QList<SourceOutcome>& Operation::outcomes() const
{
    return own_->work.outcomes;
}

unsigned Operation::lacks() const
{
    return own_->work.request.kind == OperationKind::Move ? own_->work.lacks : 0;
}

int Operation::journalError() const
{
    return own_->work.journalError;
}

QByteArray Operation::journal() const
{
    return own_->work.journal != nullptr ? own_->work.journal->path() : QByteArray();
}
