#pragma once

#include "tools/quarn_keys/givenkey.h"

#include <QList>

#include <optional>

/// What one of the phone's keys is on this keyboard.
struct KeyAnswer {
    int code = 0; ///< the phone's
    GivenKey key;
};

/// Asks for the phone's keys one after the other.
///
/// A key that was given before is not taken at once: it is only when it is pressed again that it
/// moves, and the question that it answered is asked once more at the end.
class KeyQuestions
{
public:
    enum Outcome {
        Given,    ///< taken; the next question is up
        TakenNow, ///< it answers another question, see takenFor(); the same question is still up
        Unusable, ///< no file can name it; the same question is still up
    };

    /// The codes to ask for.
    explicit KeyQuestions(QList<int> codes);

    bool isOver() const { return open_.isEmpty(); }
    /// The code that is asked for; 0 when all is over.
    int current() const { return isOver() ? 0 : open_.first(); }
    /// Its place among all, from 1 on, and how many there are.
    int place() const { return count_ - int(open_.size()) + 1; }
    int count() const { return count_; }

    /// Not to be called when all is over.
    Outcome answer(const GivenKey& key);
    /// The code that the key of the last answer is given for.
    int takenFor() const { return takenFor_; }
    /// Leaves the question without an answer.
    void skip();
    /// Leaves all that are still open without one.
    void skipAll();

    /// In the order of the codes.
    QList<KeyAnswer> answers() const;
    std::optional<GivenKey> answerFor(int code) const;

private:
    const KeyAnswer* answerWith(const GivenKey& key) const;

    QList<int> codes_;
    QList<int> open_;
    QList<KeyAnswer> answers_;
    std::optional<GivenKey> warnedOf_; ///< what TakenNow was said of last
    int takenFor_ = 0;
    int count_ = 0; ///< of questions; those asked again count again
};
