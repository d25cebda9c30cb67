#include "tests/support/utf8pieces.h"

namespace
{

/// Of a lead byte: how many bytes follow, and the range of the first of them.
struct Form {
    uchar first;
    uchar last;
    int following;
    uchar from;
    uchar to;
};

constexpr Form Forms[] = {
    {0x00, 0x7f, 0, 0, 0},       {0xc2, 0xdf, 1, 0x80, 0xbf}, {0xe0, 0xe0, 2, 0xa0, 0xbf},
    {0xe1, 0xec, 2, 0x80, 0xbf}, {0xed, 0xed, 2, 0x80, 0x9f}, {0xee, 0xef, 2, 0x80, 0xbf},
    {0xf0, 0xf0, 3, 0x90, 0xbf}, {0xf1, 0xf3, 3, 0x80, 0xbf}, {0xf4, 0xf4, 3, 0x80, 0x8f},
};

const Form* formOf(uchar lead)
{
    for (const Form& form : Forms)
        if (lead >= form.first && lead <= form.last)
            return &form;
    return nullptr;
}

Utf8Piece pieceAt(const QByteArray& name, qsizetype at)
{
    const auto lead = uchar(name.at(at));
    const Utf8Piece byte{false, lead, 1};
    const Form* form = formOf(lead);
    if (form == nullptr || at + form->following >= name.size())
        return byte;
    char32_t character = form->following == 0 ? lead : lead & (0x3f >> form->following);
    for (int i = 1; i <= form->following; ++i) {
        const auto next = uchar(name.at(at + i));
        if (next < (i == 1 ? form->from : 0x80) || next > (i == 1 ? form->to : 0xbf))
            return byte;
        character = (character << 6) | (next & 0x3f);
    }
    return {true, character, form->following + 1};
}

} // namespace

QList<Utf8Piece> utf8Pieces(const QByteArray& name)
{
    QList<Utf8Piece> pieces;
    for (qsizetype at = 0; at < name.size(); at += pieces.last().length)
        pieces.append(pieceAt(name, at));
    return pieces;
}
