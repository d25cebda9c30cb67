#include "tests/support/testmain.h"

#include <QByteArray>

#include <cstdio>
#include <vector>

namespace
{

struct Test {
    const char* name;
    TestRegistration::Run run;
};

/// Made when first used: registrations of other sources come before any order is promised.
std::vector<Test>& tests()
{
    static std::vector<Test> all;
    return all;
}

} // namespace

TestRegistration::TestRegistration(const char* name, Run run)
{
    tests().push_back({name, run});
}

int main(int argc, char** argv)
{
    giveUpRootPowers(argv);
    for (const Test& test : tests()) {
        if (argc > 1 && qstricmp(test.name, argv[1]) == 0) {
            argv[1] = argv[0];
            return test.run(argc - 1, argv + 1);
        }
    }
    if (tests().size() == 1)
        return tests().front().run(argc, argv);
    std::fputs("The first argument names one of:\n", stderr);
    for (const Test& test : tests())
        std::fprintf(stderr, "    %s\n", test.name);
    return 2;
}
