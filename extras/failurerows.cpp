#include "extras/failurerows.h"

#include "extras/operationtexts.h"
#include "extras/safetexts.h"

#include <QSet>

#include <utility>

QList<EntryPage::Row> failureRows(const Listed<Failure>& failures)
{
    QList<EntryPage::Row> rows;
    for (const Failure& failure : failures.first) {
        const QString why = reasonText(failure);
        const QString tried = troubleText(failure.trouble);
        rows.append({shownNameOf(failure.path),
                     why,
                     {shownFolderOf(failure.path), tried == why ? QString() : tried}});
    }
    if (failures.count > failures.first.size())
        rows.append({filledText(SafeTexts::instance().more,
                                QString::number(failures.count - failures.first.size())),
                     {},
                     {}});
    return rows;
}

bool wereTold(const Listed<Failure>& failures, const Listed<Failure>& told)
{
    QSet<std::pair<QByteArray, QString>> words;
    for (const Failure& one : told.first)
        words.insert({one.path, reasonText(one)});
    for (const Failure& one : failures.first) {
        if (!words.contains({one.path, reasonText(one)}))
            return false;
    }
    // What is counted only may be anything.
    return failures.count == failures.first.size();
}
