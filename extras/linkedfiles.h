#pragma once

#include "extras/entrychanges.h"
#include "extras/entrymark.h"
#include "extras/inodeset.h"

#include <QHash>

#include <optional>

/// Where files with several names have been made, for as long as more of their names may come, so
/// that those are made as links.
class LinkedFiles
{
public:
    /// Where one is. It has `temporary` in `workFolder` until the batch `serial` is committed, and
    /// then `to`.
    struct Place {
        QByteArray to;
        QByteArray workFolder;
        QByteArray temporary;
        quint64 serial = 0;
        EntryMark made;
    };

    /// The files of which more than one name will come. Until it is told, any may be one.
    void expect(std::optional<InodeSet> files) { expected_ = std::move(files); }
    /// A name of a source has been made there. What has one name only is not kept.
    void add(const struct stat& source, Place place);
    /// Where that source is; null if it is not known, or is another file by now. Valid until add().
    const Place* find(const struct stat& source) const;
    qsizetype count() const { return files_.size(); }

private:
    struct File {
        Place place;
        qint64 size = 0;
        qint64 modified = 0; ///< nanoseconds since 1970
        quint64 toCome = 0;  ///< names that have not been added yet, at most
    };

    std::optional<InodeSet> expected_;
    QHash<EntryIdentity, File> files_;
};
