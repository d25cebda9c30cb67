#include "extras/operationrun.h"

#include "extras/endsignals.h"
#include "extras/entrypage.h"
#include "extras/failurerows.h"
#include "extras/foldercursor.h"
#include "extras/journals.h"
#include "extras/lateends.h"
#include "extras/operationbox.h"
#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "extras/surveypage.h"
#include "extras/waiting.h"
#include "files/entrytexts.h"
#include "files/names.h"
#include "lang/texts.h"
#include "platform/zapplication.h"
#include "platform/zlistrowpainter.h"
#include "widgets/kwidget.h"

#include <QTimer>

#include <algorithm>
#include <utility>

namespace
{

/// After which an operation that still goes on shows that it does; one that is over by then shows
/// its result only.
constexpr int ShowAfterMilliseconds = 300;
constexpr int RefreshMilliseconds = 200;
constexpr int SliceMilliseconds = 30;

/// That there is no journal is said once.
bool toldOfJournal = false;

QString deleteTitle(const OperationRequest& request, const SurveyResult& survey)
{
    if (request.sources.size() > 1)
        return SafeTexts::instance().deleteThese;
    return survey.folders > 0 ? LANG_DELETE_DIR : LANG_DELETE_FILE;
}

/// Those in which something comes or goes.
QList<QByteArray> foldersOf(const OperationRequest& request)
{
    QList<QByteArray> folders;
    if (request.kind != OperationKind::Delete)
        folders.append(request.target);
    if (request.kind != OperationKind::Copy) {
        for (const QByteArray& source : request.sources)
            folders.append(parentOf(source));
    }
    return folders;
}

/// The names of what goes and how much it is.
QString deleteText(const OperationRequest& request, const SurveyResult& survey)
{
    const bool isOne = request.sources.size() == 1 && survey.entries == 1;
    return namesText(request.sources) + QStringLiteral("<hr>") +
           (isOne ? wideSizeText(survey.bytes) : amountText(survey.entries, survey.bytes));
}

} // namespace

OperationRun::OperationRun(std::unique_ptr<Operation> operation, const QString& title)
    : operation_(std::move(operation)), title_(title), box_(std::make_unique<OperationBox>(title))
{
    connect(box_.get(), &OperationBox::cancelled, this, &OperationRun::cancel);
    operation_->setLateEnd(LateEnds::teller(foldersOf(operation_->request())));
}

OperationRun::~OperationRun() = default;

bool OperationRun::isBusy() const
{
    return operation_->state() == Operation::State::Surveying ||
           operation_->state() == Operation::State::Working;
}

/// Goes on until something is to be asked or it has ended. False if the program ends.
bool OperationRun::advance()
{
    begun_.start();
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [this, &timer] {
        // It has ended under a question, which may stand for long.
        if (!isBusy()) {
            timer.stop();
            return;
        }
        operation_->step(SliceMilliseconds);
        showProgress();
    });
    timer.start(0);
    const bool waited = ZApplication::waitUntil([this] { return !isBusy(); });
    box_->hide();
    if (!waited)
        abandon();
    return waited;
}

/// The program ends: what is half is removed before it does, and the next start offers to go on.
void OperationRun::abandon()
{
    operation_->interrupt();
    while (!operation_->hasEnded())
        operation_->step(SliceMilliseconds);
}

void OperationRun::showProgress()
{
    const bool isUp = box_->isVisible();
    if (isUp ? refreshed_.elapsed() < RefreshMilliseconds
             : begun_.elapsed() < ShowAfterMilliseconds)
        return;
    refreshed_.start();
    const SafeTexts& texts = SafeTexts::instance();
    if (operation_->state() == Operation::State::Surveying) {
        const SurveyResult& survey = operation_->survey();
        box_->showLines({cancelling_ ? texts.cancelling
                                     : filledText(texts.counting, QString::number(survey.entries)),
                         wideSizeText(survey.bytes)},
                        -1);
        return;
    }
    const OperationProgress progress = operation_->progress();
    box_->showLines({cancelling_ ? texts.cancelling : shownNameOf(progress.current),
                     doneText(progress), paceText(progress)},
                    progress.percent());
}

void OperationRun::cancel()
{
    if (cancelling_)
        return;
    cancelling_ = true;
    operation_->cancel();
    refreshed_.invalidate();
    showProgress();
}

bool OperationRun::survey()
{
    return advance() && operation_->state() == Operation::State::Surveyed;
}

bool OperationRun::askBefore()
{
    const SurveyResult& survey = operation_->survey();
    if (survey.isPlain())
        return true;
    if (survey.entries == 0) {
        tellFailures();
        return false;
    }
    SurveyPage page(survey, operation_->request().kind);
    for (;;) {
        const PageAnswer answer = answerOn(page);
        // Rows open a menu of their own.
        if (answer.kind == PageAnswer::Row)
            continue;
        if (answer.kind != PageAnswer::Left)
            return false;
        page.decide(*operation_);
        told_ = survey.troubles;
        return true;
    }
}

bool OperationRun::askToDelete(const QString& question, const QString& note)
{
    const SurveyResult& survey = operation_->survey();
    const OperationRequest& request = operation_->request();
    if (survey.entries == 0) {
        tellFailures();
        return false;
    }
    const QString text =
        deleteText(request, survey) + (note.isEmpty() ? note : QLatin1Char('\n') + note);
    return textView->showText(question.isEmpty() ? deleteTitle(request, survey) : question, text,
                              Qt::AlignHCenter, QStringLiteral("res/img/delete.png"),
                              kWidget::Question) == 1;
}

QStringList OperationRun::left(const QStringList& sources) const
{
    QStringList result;
    const QList<SourceOutcome>& ends = operation_->outcomes();
    for (qsizetype i = 0; i < ends.size(); ++i) {
        if (ends.at(i) == SourceOutcome::Failed || ends.at(i) == SourceOutcome::NotReached)
            result.append(sources.at(i));
    }
    return result;
}

void OperationRun::work()
{
    EndSignals ends;
    connect(&ends, &EndSignals::received, this, [this, &ends](int signal) {
        abandon();
        ends.obey(signal);
    });
    if (operation_->state() == Operation::State::Surveyed)
        operation_->begin();
    while (!operation_->hasEnded()) {
        if (!advance())
            return;
        if (operation_->state() == Operation::State::Asking)
            ask();
    }
    if (!wereTold(operation_->failures(), told_) || operation_->lacks() != 0 ||
        (operation_->journalError() != 0 && !toldOfJournal))
        tellFailures();
}

/// About something that came into the way while it went on.
void OperationRun::ask()
{
    const SafeTexts& texts = SafeTexts::instance();
    const Conflict& what = operation_->question();
    EntryPage page(title_);
    page.setLines({shownNameOf(what.target), filledText(texts.newOne, factsText(what.sourceFacts)),
                   filledText(texts.oldOne, factsText(what.targetFacts))});
    constexpr Answer Answers[] = {Answer::Replace, Answer::KeepBoth, Answer::LeaveOut};
    QList<EntryPage::Row> rows;
    for (const Answer answer : Answers)
        rows.append({answerText(answer), {}, {}});
    for (const Answer answer : Answers)
        rows.append({filledText(texts.forAll, answerText(answer)), {}, {}});
    page.setRows(rows, true);
    page.setSoftKeys(LANG_SELECT, LANG_CANCEL);
    PageAnswer answer = answerOn(page);
    if (answer.kind == PageAnswer::Left)
        answer = {PageAnswer::Row, page.currentRow()};
    constexpr int Kinds = 3;
    if (answer.kind == PageAnswer::Row)
        operation_->answer(Answers[answer.row % Kinds], answer.row >= Kinds);
    else if (answer.kind == PageAnswer::Right)
        operation_->cancel();
    else
        abandon();
}

void OperationRun::tellFailures()
{
    const SafeTexts& texts = SafeTexts::instance();
    const Listed<Failure>& failures =
        operation_->hasEnded() ? operation_->failures() : operation_->survey().troubles;
    QList<EntryPage::Row> rows = failureRows(failures);
    if (operation_->hasEnded() && operation_->journalError() != 0 && !toldOfJournal) {
        toldOfJournal = true;
        rows.append({texts.noJournal,
                     errorText(operation_->journalError()),
                     {ZListRowPainter::visibleText(decodeName(journalFolder())), {}}});
    }
    if (operation_->hasEnded() && operation_->lacks() != 0)
        rows.append({texts.notHeld,
                     lacksText(operation_->lacks()),
                     {ZListRowPainter::visibleText(decodeName(operation_->request().target)), {}}});
    EntryPage page(title_);
    if (!failures.isEmpty())
        page.setLines({filledText(texts.notDone, QString::number(failures.count))});
    page.setRows(rows);
    page.setSoftKeys({}, LANG_BACK);
    while (answerOn(page).kind == PageAnswer::Row) {
    }
}
