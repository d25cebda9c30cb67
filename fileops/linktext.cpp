#include "fileops/linktext.h"

#include <QFile>

#include <array>
#include <climits>
#include <unistd.h>

QString linkText(const QString& path)
{
    std::array<char, PATH_MAX> text{};
    const ssize_t length = readlink(QFile::encodeName(path).constData(), text.data(), text.size());
    return length < 0 ? QString() : QFile::decodeName(QByteArray(text.data(), length));
}
