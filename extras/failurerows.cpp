#include "extras/failurerows.h"

#include "extras/operationtexts.h"
#include "extras/safetexts.h"

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
