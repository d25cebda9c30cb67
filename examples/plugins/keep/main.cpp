// Keep, a plugin without a window: puts a copy of a file beside it, FILE.kept.

#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace
{

constexpr int Success = 0;
constexpr int Failure = 1;
constexpr int WrongUsage = 2;

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3 || std::string_view(argv[1]) != "-d") {
        std::fputs("usage: Keep -d FILE\n", stderr);
        return WrongUsage;
    }
    std::filesystem::path copy(argv[2]);
    copy += ".kept";
    // A copy that is there already stays as it is.
    std::error_code problem;
    if (std::filesystem::copy_file(argv[2], copy, problem))
        return Success;
    std::fprintf(stderr, "Keep: %s: %s\n", copy.c_str(), problem.message().c_str());
    return Failure;
}
