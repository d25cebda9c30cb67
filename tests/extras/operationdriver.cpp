// Runs one operation to its end, for tests that kill it on the way.
//
// operationdriver copy|move|delete ANSWER TARGET SOURCE...
// operationdriver finish|takeback|discard
//
// ANSWER is "replace", "keep" or "leave" for all that is in the way; TARGET is unused for "delete".
// The second form takes every journal that it finds. Says how it ended, a line for each failure;
// the exit status is 0 if nothing failed, 1 if something did, 2 if it could not begin.

#include "extras/journals.h"
#include "extras/operation.h"
#include "tests/extras/operationloop.h"

#include <cstdio>
#include <cstring>

namespace
{

Answer answerOf(const char* word)
{
    if (std::strcmp(word, "keep") == 0)
        return Answer::KeepBoth;
    return std::strcmp(word, "leave") == 0 ? Answer::LeaveOut : Answer::Replace;
}

int run(Operation& operation, Answer answer)
{
    runToEnd(operation, answer);
    for (const Failure& failure : operation.failures().first)
        std::printf("%s: %d, %s\n", failure.path.constData(), int(failure.trouble),
                    std::strerror(failure.error));
    return operation.failures().isEmpty() ? 0 : 1;
}

int resume(const char* what)
{
    int result = 0;
    for (const InterruptedOperation& found : findJournals()) {
        if (std::strcmp(what, "discard") == 0) {
            if (!discardJournal(found.journal))
                result = 2;
            continue;
        }
        const auto operation = std::strcmp(what, "finish") == 0
                                   ? Operation::finish(found.journal)
                                   : Operation::takeBack(found.journal);
        if (operation == nullptr) {
            std::perror(what);
            result = 2;
        } else if (run(*operation, Answer::Replace) != 0) {
            result = 1;
        }
    }
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2)
        return resume(argv[1]);
    if (argc < 5)
        return 2;
    OperationRequest request;
    request.kind = std::strcmp(argv[1], "move") == 0     ? OperationKind::Move
                   : std::strcmp(argv[1], "delete") == 0 ? OperationKind::Delete
                                                         : OperationKind::Copy;
    request.target = argv[3];
    for (int i = 4; i < argc; ++i)
        request.sources.append(argv[i]);
    Operation operation(request);
    return run(operation, answerOf(argv[2]));
}
