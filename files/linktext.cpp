#include "files/linktext.h"

#include "files/names.h"

#include <array>
#include <climits>
#include <unistd.h>

QString linkText(const QString& path)
{
    std::array<char, PATH_MAX> text{};
    const ssize_t length = readlink(encodedPath(path).constData(), text.data(), text.size());
    return length < 0 ? QString() : decodeName(QByteArrayView(text.data(), length));
}
