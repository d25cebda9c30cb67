#pragma once

#include "extras/entrypage.h"
#include "extras/operationtypes.h"

class Operation;
class ZOptionsMenu;

/// The page before an operation: what will not be done, and what is in the way of what. Choosing a
/// row of the latter opens a menu that says what becomes of it, or of all. Until something else is
/// chosen both are kept, so that nothing can be lost.
class SurveyPage : public EntryPage
{
    Q_OBJECT

public:
    SurveyPage(const SurveyResult& survey, OperationKind kind);

    /// Gives an operation that has surveyed the same the answers that were chosen.
    void decide(Operation& operation) const;
    /// What is chosen for a conflict.
    Answer answer(qsizetype conflict) const { return answers_.at(conflict); }

    ZOptionsMenu* menu() const { return menu_; }

public slots:
    void takeAnswer();

private:
    static constexpr Answer Answers[] = {Answer::Replace, Answer::KeepBoth, Answer::LeaveOut};

    QStringList headLines() const;
    Row conflictRow(qsizetype conflict) const;
    void openMenu(int row);
    void makeMenu();

    SurveyResult survey_;
    Answer forAll_ = Answer::KeepBoth;
    QList<Answer> answers_; ///< one for each conflict that is listed
    ZOptionsMenu* menu_ = nullptr;
    qsizetype chosen_ = -1; ///< the conflict that the menu is about
};
