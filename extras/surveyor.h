#pragma once

#include "extras/inodeset.h"
#include "extras/targetfolder.h"
#include "extras/targetroom.h"
#include "extras/treewalk.h"
#include "extras/work.h"

#include <QHash>
#include <QSet>

#include <memory>
#include <optional>
#include <vector>

/// Walks the sources of an operation, and what the target has in their places, and changes nothing.
class Surveyor
{
public:
    /// The work outlives it.
    explicit Surveyor(const Work& work);

    /// Looks at one entry. False when all is seen.
    bool step();
    const SurveyResult& result() const { return result_; }
    /// What each source was, by its place among them.
    const QHash<int, EntryMark>& marks() const { return marks_; }
    /// Files of which it has met more than one name, where the target can have such; nothing if it
    /// has not looked into all there is.
    const std::optional<InodeSet>& linked() const { return linked_; }

private:
    /// A folder on the way, and the one in the target that its contents would join.
    struct Level {
        std::optional<QByteArray> joined;
        QSet<QByteArray> names; ///< in it so far, where the target confuses some
    };

    void begin();
    bool nextSource();
    void see();
    void count();
    bool isFirstName();
    bool fits(const QByteArray& name);
    bool isWhole(const QByteArray& name);
    void enter(const std::optional<QByteArray>& joined);
    void walkFailed();
    void trouble(Trouble trouble, int error);
    void end();
    bool writes() const { return target_ != nullptr && target_->isOpen(); }
    bool deletes() const { return work_.request.kind == OperationKind::Delete; }

    const Work& work_;
    SurveyResult result_;
    QHash<int, EntryMark> marks_;
    SourceFolders sources_;
    std::unique_ptr<TargetFolder> target_;
    TargetRoom room_;
    int source_ = -1;
    std::unique_ptr<TreeWalk> walk_;
    std::vector<Level> levels_;
    InodeSet seen_; ///< files with several names, here or elsewhere
    std::optional<InodeSet> linked_ = InodeSet();
    bool hasBegun_ = false;
};
