#include "platform/ztheme.h"

namespace
{

ZTheme::Kind chosen = ZTheme::Light;

QColor rgb(unsigned value)
{
    return QColor(QRgb(value));
}

/// The bars are black in any light.
ZTheme withBars(ZTheme theme)
{
    theme.bar = rgb(0x000000);
    theme.barText = rgb(0xffffff);
    theme.barSecondText = rgb(0xb8bdc6);
    theme.barMark = rgb(0xff640c);
    theme.barTrack = rgb(0x464951);
    theme.barWarning = rgb(0xffb454);
    return theme;
}

ZTheme light()
{
    ZTheme theme;
    theme.ground = rgb(0xffffff);
    theme.text = rgb(0x16181d);
    theme.secondText = rgb(0x5b616b);
    theme.hairline = rgb(0xe9ebee);
    theme.highlight = rgb(0xffe6d6);
    theme.highlightText = theme.text;
    theme.mark = rgb(0xd24a00);
    theme.frame = rgb(0x000000);
    theme.outline = rgb(0x767b85);
    theme.thumb = rgb(0x767b85);
    theme.selection = rgb(0x5b616b);
    theme.selectionText = rgb(0xffffff);
    theme.shadow = QColor(0, 0, 0, 0x38);
    theme.warning = rgb(0x9a5b00);
    theme.done = rgb(0x2e7d32);
    // A little darker than on a bar alone, to be told from white.
    theme.tabMark = rgb(0xfa6008);
    return withBars(theme);
}

ZTheme dark()
{
    ZTheme theme;
    theme.ground = rgb(0x101114);
    theme.text = rgb(0xecedef);
    theme.secondText = rgb(0x9ba1ab);
    theme.hairline = rgb(0x22252b);
    theme.highlight = rgb(0x3a2417);
    theme.highlightText = rgb(0xffffff);
    theme.mark = rgb(0xd24a00);
    theme.frame = rgb(0x7e848f);
    theme.outline = rgb(0x7e848f);
    theme.thumb = rgb(0x7e848f);
    theme.selection = rgb(0x9ba1ab);
    theme.selectionText = rgb(0x101114);
    theme.shadow = QColor(0, 0, 0, 0xa0);
    theme.warning = rgb(0xd89a3c);
    theme.done = rgb(0x66bb6a);
    theme.tabMark = rgb(0xff640c);
    return withBars(theme);
}

} // namespace

const ZTheme& ZTheme::of(Kind kind)
{
    static const ZTheme themes[] = {light(), dark()};
    return themes[kind == Dark ? 1 : 0];
}

const ZTheme& ZTheme::current()
{
    return of(chosen);
}

void ZTheme::choose(Kind kind)
{
    chosen = kind;
}
