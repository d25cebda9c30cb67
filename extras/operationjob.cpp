#include "extras/operationjob.h"

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

OperationJob::OperationJob(const OperationRequest& request)
    : work_(tidied(request)), surveyor_(std::make_unique<Surveyor>(work_))
{
}

OperationJob::~OperationJob() = default;

std::shared_ptr<OperationJob> OperationJob::resumed(const QByteArray& journal)
{
    const std::optional<OperationRequest> request = requestOf(journal);
    if (!request)
        return nullptr;
    auto job = std::make_shared<OperationJob>(*request);
    job->surveyor_.reset();
    job->state_ = State::Working;
    Work& work = job->work_;
    work.journal = Journal::resume(journal);
    if (work.journal == nullptr)
        return nullptr;
    job->earlier_ = std::make_unique<JournalIndex>(work.journal->descriptor());
    work.decisions = job->earlier_->decisions();
    work.marks = job->earlier_->marks();
    work.temporaryPrefix = work.journal->temporaryPrefix();
    // What it told there may have been done or not.
    if (job->earlier_->isDamaged())
        work.failures.add({work.request.kind == OperationKind::Delete ? work.request.sources.first()
                                                                      : work.request.target,
                           Trouble::NotesDamaged, 0});
    return job;
}

std::shared_ptr<OperationJob> OperationJob::finish(const QByteArray& journal)
{
    auto job = resumed(journal);
    if (job == nullptr)
        return nullptr;
    job->first_ = [own = job.get()] {
        if (own->isWithoutPlace())
            return;
        Work& work = own->work_;
        if (work.request.kind != OperationKind::Delete) {
            TargetFolder target(work.request.target, work.temporaryPrefix);
            if (target.isOpen())
                clearLeftovers(*own->earlier_, target, work.temporaryPrefix);
        }
        own->startWork(own->earlier_.get());
    };
    return job;
}

std::shared_ptr<OperationJob> OperationJob::takeBack(const QByteArray& journal)
{
    auto job = resumed(journal);
    if (job != nullptr && job->work_.request.kind == OperationKind::Delete) {
        errno = EOPNOTSUPP;
        return nullptr;
    }
    if (job == nullptr)
        return nullptr;
    job->first_ = [own = job.get()] {
        if (!own->isWithoutPlace())
            own->startTakingBack();
    };
    return job;
}

/// Nothing can be done while a drive is away. The journal stays for when it is back.
bool OperationJob::isWithoutPlace()
{
    const QList<Failure> missing = missingPlaces(*earlier_);
    if (missing.isEmpty())
        return false;
    for (const Failure& one : missing)
        work_.failures.add(one);
    work_.outcomes.fill(SourceOutcome::Failed);
    work_.journal.reset();
    state_ = State::Finished;
    return true;
}

void OperationJob::startWork(JournalIndex* known)
{
    if (work_.journal != nullptr)
        work_.temporaryPrefix = work_.journal->temporaryPrefix();
    else
        work_.temporaryPrefix =
            TemporaryStart + QByteArray::number(QRandomGenerator::system()->generate64(), 36) + '-';
    const bool isByBytes = work_.progress.bytesTotal > 0;
    estimate_ = std::make_unique<Estimate>(isByBytes ? work_.progress.bytesTotal
                                                     : work_.progress.entriesTotal);
    if (work_.request.kind == OperationKind::Delete)
        deletion_ = std::make_unique<Deletion>(work_, known != nullptr);
    else
        transfer_ = std::make_unique<Transfer>(work_, known);
    state_ = State::Working;
}

void OperationJob::startTakingBack()
{
    takingBack_ = std::make_unique<TakingBack>(work_, *earlier_);
    estimate_ = std::make_unique<Estimate>(work_.progress.entriesTotal);
}

void OperationJob::decide(qsizetype conflict, Answer answer)
{
    work_.decisions.byPath.insert(survey_.conflicts.first[conflict].source, answer);
}

void OperationJob::decideForAll(Answer answer)
{
    work_.decisions.forAll = answer;
}

void OperationJob::begin()
{
    work_.journal = Journal::begin(work_.request, recordsOf(work_));
    if (work_.journal == nullptr)
        work_.journalError = errno;
    work_.progress.bytesTotal = work_.request.kind == OperationKind::Delete ? 0 : survey_.bytes;
    work_.progress.entriesTotal = survey_.entries;
    startWork(nullptr);
}

void OperationJob::answer(Answer answer, bool forAll)
{
    JournalRecord record;
    record.type = forAll ? JournalRecord::Type::DecisionForAll : JournalRecord::Type::Decision;
    record.answer = answer;
    if (forAll) {
        work_.decisions.forAll = answer;
    } else {
        record.from = transfer_->question().source;
        work_.decisions.byPath.insert(record.from, answer);
    }
    if (work_.journal != nullptr)
        work_.journal->add(record);
    estimate_->skip(milliseconds() - askedSince_);
    transfer_->goOn();
    state_ = State::Working;
}

void OperationJob::run(int milliseconds)
{
    const qint64 end = ::milliseconds() + milliseconds;
    do {
        obeyStop();
        step();
    } while (isBusy() && ::milliseconds() < end);
    if (surveyor_ != nullptr)
        survey_ = surveyor_->result();
    if (surveyor_ != nullptr && state_ != State::Surveying) {
        work_.marks = surveyor_->marks();
        work_.linked = surveyor_->linked();
        surveyor_.reset();
    }
    if (state_ == State::Working && estimate_ != nullptr)
        noteProgress();
}

void OperationJob::runToEnd()
{
    constexpr int LongMs = 60 * 1000;
    work_.patienceMs = LongMs;
    while (!hasEnded())
        run(LongMs);
}

void OperationJob::step()
{
    if (first_ && isBusy()) {
        std::exchange(first_, {})();
        return;
    }
    if (state_ == State::Surveying && !surveyor_->step())
        state_ = State::Surveyed;
    else if (state_ == State::Working && !stepWork())
        end(stop_ == Stop::None ? State::Finished : State::Cancelled);
}

/// False when the work has come to its end.
bool OperationJob::stepWork()
{
    if (deletion_ != nullptr)
        return deletion_->step();
    if (takingBack_ != nullptr)
        return takingBack_->step();
    switch (transfer_->step()) {
    case Transfer::Step::More:
        return true;
    case Transfer::Step::Ask:
        state_ = State::Asking;
        askedSince_ = milliseconds();
        return true;
    case Transfer::Step::Done:
        break;
    }
    return false;
}

void OperationJob::obeyStop()
{
    if (stop_ != Stop::None || wantedStop_ == Stop::None || hasEnded())
        return;
    if (state_ == State::Surveying || state_ == State::Surveyed) {
        stop_ = wantedStop_;
        end(State::Cancelled);
        return;
    }
    // Before there is anything to be stopped it is made ready for that.
    if (first_)
        return;
    stop_ = wantedStop_;
    if (transfer_ != nullptr)
        transfer_->cancel(stop_ == Stop::ForGood);
    if (deletion_ != nullptr)
        deletion_->cancel();
    if (takingBack_ != nullptr)
        takingBack_->cancel();
    if (state_ == State::Asking)
        state_ = State::Working;
}

void OperationJob::end(State ended)
{
    state_ = ended;
    // What was taken back in part can be taken back further.
    const bool staysOpen = (takingBack_ != nullptr && takingBack_->wasCancelled()) ||
                           (stop_ == Stop::Interrupt && ended == State::Cancelled);
    transfer_.reset();
    deletion_.reset();
    takingBack_.reset();
    if (work_.journal != nullptr && !staysOpen)
        work_.journal->remove(ended == State::Finished);
    work_.journal.reset();
    if (ended == State::Finished) {
        work_.progress.bytesTotal = work_.progress.bytesDone;
        work_.progress.entriesTotal = work_.progress.entriesDone;
    }
}

void OperationJob::noteProgress()
{
    const OperationProgress now = progress();
    estimate_->setTotal(now.bytesTotal > 0 ? now.bytesTotal : now.entriesTotal);
    estimate_->note(now.bytesTotal > 0 ? now.bytesDone : now.entriesDone, milliseconds());
}

OperationProgress OperationJob::progress()
{
    OperationProgress now = work_.progress;
    if (transfer_ != nullptr)
        now.bytesDone += transfer_->flushedBytes();
    now.bytesDone = mostBytesDone_ = std::max(mostBytesDone_, now.bytesDone);
    now.bytesTotal = std::max(now.bytesTotal, now.bytesDone);
    now.entriesTotal = std::max(now.entriesTotal, now.entriesDone);
    if (estimate_ != nullptr) {
        now.bytesPerSecond = now.bytesTotal > 0 ? estimate_->rate() : 0;
        now.secondsLeft = estimate_->secondsLeft();
    }
    return now;
}

/// What is not on the medium yet is not done for who waits no longer.
QList<SourceOutcome> OperationJob::outcomes() const
{
    QList<SourceOutcome> all = work_.outcomes;
    for (const int source : transfer_ != nullptr ? transfer_->unsettled() : QSet<int>()) {
        if (all[source] == SourceOutcome::Done || all[source] == SourceOutcome::NotAllKept)
            all[source] = SourceOutcome::NotReached;
    }
    return all;
}

OperationView OperationJob::view()
{
    OperationView view;
    view.state = state_;
    view.survey = survey_;
    if (state_ == State::Asking)
        view.question = transfer_->question();
    view.progress = progress();
    view.failures = work_.failures;
    view.outcomes = outcomes();
    view.lacks = work_.request.kind == OperationKind::Move ? work_.lacks : 0;
    view.journalError = work_.journalError;
    if (work_.journal != nullptr)
        view.journal = work_.journal->path();
    return view;
}
