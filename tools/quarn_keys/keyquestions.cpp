#include "tools/quarn_keys/keyquestions.h"

#include <algorithm>

KeyQuestions::KeyQuestions(QList<int> codes)
    : codes_(std::move(codes)), open_(codes_), count_(int(codes_.size()))
{
}

KeyQuestions::Outcome KeyQuestions::answer(const GivenKey& key)
{
    if (!key.hasName())
        return Unusable;
    if (const KeyAnswer* other = answerWith(key)) {
        takenFor_ = other->code;
        if (warnedOf_ != key) {
            warnedOf_ = key;
            return TakenNow;
        }
        answers_.removeIf([this](const KeyAnswer& each) { return each.code == takenFor_; });
        open_.append(takenFor_);
        ++count_;
    }
    answers_.append({current(), key});
    skip();
    return Given;
}

void KeyQuestions::skip()
{
    warnedOf_.reset();
    open_.removeFirst();
}

void KeyQuestions::skipAll()
{
    warnedOf_.reset();
    open_.clear();
}

QList<KeyAnswer> KeyQuestions::answers() const
{
    QList<KeyAnswer> ordered = answers_;
    std::sort(ordered.begin(), ordered.end(), [this](const KeyAnswer& a, const KeyAnswer& b) {
        return codes_.indexOf(a.code) < codes_.indexOf(b.code);
    });
    return ordered;
}

std::optional<GivenKey> KeyQuestions::answerFor(int code) const
{
    for (const KeyAnswer& answer : answers_) {
        if (answer.code == code)
            return answer.key;
    }
    return std::nullopt;
}

const KeyAnswer* KeyQuestions::answerWith(const GivenKey& key) const
{
    const auto found = std::find_if(answers_.begin(), answers_.end(),
                                    [&key](const KeyAnswer& each) { return each.key == key; });
    return found == answers_.end() ? nullptr : &*found;
}
