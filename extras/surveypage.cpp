#include "extras/surveypage.h"

#include "extras/failurerows.h"
#include "extras/operation.h"
#include "extras/operationtexts.h"
#include "extras/safetexts.h"
#include "files/entrytexts.h"
#include "lang/texts.h"
#include "platform/zlistbox.h"
#include "platform/zoptionsmenu.h"
#include "platform/zpicture.h"
#include "platform/zskinservice.h"

namespace
{

/// A size of which no line ends between the number and its unit.
QString unbroken(QString size)
{
    return size.replace(QLatin1Char(' '), QChar(QChar::Nbsp));
}

} // namespace

SurveyPage::SurveyPage(const SurveyResult& survey, OperationKind kind)
    : EntryPage(titleOf(kind)), survey_(survey), answers_(survey.conflicts.first.size(), forAll_)
{
    QList<Row> rows;
    for (qsizetype i = 0; i < answers_.size(); ++i)
        rows.append(conflictRow(i));
    if (survey.conflicts.count > answers_.size())
        rows.append({filledText(SafeTexts::instance().more,
                                QString::number(survey.conflicts.count - answers_.size())),
                     answerText(forAll_),
                     {}});
    rows.append(failureRows(survey.troubles));
    setLines(headLines());
    setRows(rows);
    setSoftKeys(kind == OperationKind::Move ? LANG_MOVE : LANG_COPY, LANG_CANCEL);
    connect(this, &EntryPage::chosen, this, &SurveyPage::openMenu);
}

QStringList SurveyPage::headLines() const
{
    const SafeTexts& texts = SafeTexts::instance();
    QStringList lines;
    if (!survey_.hasRoom)
        lines.append(filledText(texts.noRoom, unbroken(wideSizeText(survey_.neededBytes)),
                                unbroken(wideSizeText(survey_.freeBytes))));
    if (!survey_.conflicts.isEmpty())
        lines.append(filledText(texts.inTheWay, QString::number(survey_.conflicts.count)));
    if (!survey_.troubles.isEmpty())
        lines.append(filledText(texts.notPossible, QString::number(survey_.troubles.count)));
    return lines;
}

EntryPage::Row SurveyPage::conflictRow(qsizetype conflict) const
{
    const SafeTexts& texts = SafeTexts::instance();
    const Conflict& what = survey_.conflicts.first.at(conflict);
    return {shownNameOf(what.target),
            answerText(answers_.at(conflict)),
            {filledText(texts.newOne, factsText(what.sourceFacts)),
             filledText(texts.oldOne, factsText(what.targetFacts))}};
}

void SurveyPage::makeMenu()
{
    const SafeTexts& texts = SafeTexts::instance();
    menu_ = new ZOptionsMenu(QRect(QPoint(0, 0), QPoint(-1, -1)), this, nullptr, {},
                             ZSkinService::clsOptionsMenu);
    menu_->setFont(font());
    const auto add = [this](const QString& text) {
        const int id = menu_->count();
        menu_->insertItem(text, nullptr, ZPicture(), true, id, id);
        menu_->connectItem(id, this, "takeAnswer()");
    };
    for (const Answer answer : Answers)
        add(answerText(answer));
    for (const Answer answer : Answers)
        add(filledText(texts.forAll, answerText(answer)));
}

void SurveyPage::openMenu(int row)
{
    // What cannot be done has no answers.
    if (row >= answers_.size() + (survey_.conflicts.count > answers_.size() ? 1 : 0))
        return;
    chosen_ = row;
    if (menu_ == nullptr)
        makeMenu();
    menu_->show();
}

void SurveyPage::takeAnswer()
{
    constexpr int Kinds = 3;
    const int item = menu_->getActiveItemId();
    const Answer answer = Answers[item % Kinds];
    const bool isForAll = item >= Kinds || chosen_ >= answers_.size();
    if (isForAll)
        forAll_ = answer;
    for (qsizetype i = 0; i < answers_.size(); ++i) {
        if (!isForAll && i != chosen_)
            continue;
        answers_[i] = answer;
        setRow(int(i), conflictRow(i));
    }
    if (isForAll && survey_.conflicts.count > answers_.size())
        setRow(int(answers_.size()),
               {list()->item(int(answers_.size()))->getSubItemText(1, 0), answerText(forAll_), {}});
}

void SurveyPage::decide(Operation& operation) const
{
    for (qsizetype i = 0; i < answers_.size(); ++i)
        operation.decide(i, answers_.at(i));
    if (survey_.conflicts.count > answers_.size())
        operation.decideForAll(forAll_);
}
