#pragma once

#include <QByteArray>

/// A GIF of 4 x 4 pixels that is red and blue in turn, for 50 ms each, without end.
inline QByteArray movingGif()
{
    return QByteArray::fromHex("47494638396104000400810000ff000000000000000000000021ff0b4e455453"
                               "43415045322e30030100000021f90400050000002c0000000004000400000809"
                               "0001081c48b02080800021f90400050000002c0000000004000400810000ff00"
                               "000000000000000008090001081c48b0208080003b");
}
