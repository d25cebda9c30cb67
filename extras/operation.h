#pragma once

#include "extras/operationtypes.h"

#include <functional>
#include <memory>
#include <optional>

/// Copies, moves or deletes entries so that nothing is lost, whenever it is cut short. Has no
/// window: whoever owns it calls step() from the event loop until it has ended. What it tells
/// changes with step(), begin(), answer() and the stopping calls only.
///
///     Surveying ── Surveyed ──begin()── Working ⇄ Asking ── Finished
///                                    or Cancelled, from everywhere
///
/// Nothing is changed before begin(). Destroying it while it works is like a cancel.
class Operation
{
public:
    enum class State {
        Surveying, ///< step() goes on walking the sources
        Surveyed,  ///< survey() is whole; answers may be given; begin() goes on
        Working,   ///< step() goes on
        Asking,    ///< question() waits for answer()
        Finished,
        Cancelled
    };

    explicit Operation(const OperationRequest& request);
    ~Operation();
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    /// Goes on with what a journal tells, to the same end as if nothing had happened. What had been
    /// answered is kept. Begins in Working; survey() is empty and totals grow while it works. Where
    /// a folder that it works in is away, as one on a drive may be, it ends soon, tells that, and
    /// the journal stays. Null, with errno set, if the journal is damaged at its beginning
    /// (EBADMSG), is another instance's (EWOULDBLOCK) or cannot be read.
    static std::unique_ptr<Operation> finish(const QByteArray& journal);
    /// Undoes what a journal tells, as far as that can be: removes what was made, moves back what
    /// was moved. What somebody has changed since stays and is among the failures, as is each
    /// replaced file that cannot come back. Otherwise like finish(); a delete cannot be taken back
    /// (EOPNOTSUPP).
    static std::unique_ptr<Operation> takeBack(const QByteArray& journal);

    State state() const;
    const OperationRequest& request() const;
    bool hasEnded() const { return state() == State::Finished || state() == State::Cancelled; }

    /// Works for about that long, at least one piece. A piece is sized by the speed of the medium
    /// to take a tenth of a second or less. If the system takes longer for it, this does not: the
    /// piece goes on, and the next step waits for it again.
    State step(int milliseconds);

    /// What is known so far; whole when Surveyed.
    const SurveyResult& survey() const;
    /// Decides about conflict `index` of survey().conflicts.first.
    void decide(qsizetype index, Answer answer);
    /// Decides about all that has no answer of its own, those that come up later included.
    void decideForAll(Answer answer);
    /// From Surveyed to Working. Conflicts without an answer are asked about when reached.
    void begin();

    /// What is asked, in Asking.
    const Conflict& question() const;
    /// Goes on with Working.
    void answer(Answer answer, bool forAll);

    /// Takes effect with the next steps, within a second: what is whole stays and what is half is
    /// removed. No effect once it has ended. Where the medium takes longer that goes on behind the
    /// scenes when this has ended: what is whole gets its name as soon as it is on the medium, and
    /// the journal stays until then, so that the end of the program loses nothing.
    void cancel();
    /// Like cancel(), but the journal stays, so that the next start offers to go on. What is to
    /// come into folders that were made may still come: they are as they are while one works.
    void interrupt();

    /// What is called when that which went on behind the scenes is at its end: once, from a thread
    /// of its own, when nothing more is changed. Not if all ended while this was stepped.
    void setLateEnd(std::function<void()> ended);

    OperationProgress progress() const;
    /// What could not be done, the refused ones of the survey included.
    const Listed<Failure>& failures() const;
    /// One for each source, in their order.
    const QList<SourceOutcome>& outcomes() const;
    /// Each Lack of what was moved and now is without that, since the file system of the target has
    /// no place for it. Of what was copied the source still has all.
    unsigned lacks() const;
    /// From begin() on: an errno if there is no journal, so that a power cut could not be mended;
    /// 0 if there is one.
    int journalError() const;
    /// Where the journal lies; empty if there is none.
    QByteArray journal() const;

private:
    class Private;

    void stop(bool isForGood);

    explicit Operation(std::unique_ptr<Private> own);

    std::unique_ptr<Private> own_;
};
