#include "platform/zskinservice.h"

#include "platform/ztheme.h"

#include <algorithm>
#include <array>
#include <utility>

namespace
{

ZSkinService::Look pageLook(const ZTheme& theme)
{
    return {theme.ground,     theme.text,    theme.secondText, theme.highlight, theme.highlightText,
            theme.secondText, theme.outline, theme.mark,       theme.hairline,  theme.thumb};
}

/// What is highlighted on a bar is filled with the accent, which bears dark text only.
ZSkinService::Look barLook(const ZTheme& theme)
{
    return {theme.bar,           theme.barText, theme.barSecondText, theme.barMark, theme.bar,
            theme.barSecondText, theme.outline, theme.barMark,       theme.bar,     theme.thumb};
}

/// The tab in front is a part of the page below it.
ZSkinService::Look tabLook(const ZTheme& theme)
{
    ZSkinService::Look look = barLook(theme);
    look.highlight = theme.ground;
    look.highlightText = theme.text;
    look.mark = theme.tabMark;
    return look;
}

struct Looks {
    explicit Looks(const ZTheme& theme)
        : page(pageLook(theme)), bar(barLook(theme)), tab(tabLook(theme))
    {
    }

    ZSkinService::Look page;
    ZSkinService::Look bar;
    ZSkinService::Look tab;
};

const Looks& currentLooks()
{
    static const Looks light(ZTheme::of(ZTheme::Light));
    static const Looks dark(ZTheme::of(ZTheme::Dark));
    return &ZTheme::current() == &ZTheme::of(ZTheme::Dark) ? dark : light;
}

} // namespace

const ZSkinService::Look& ZSkinService::look(unsigned cls)
{
    const Looks& looks = currentLooks();
    switch (cls) {
    case clsMainWidget:
    case clsSoftKey:
        return looks.bar;
    case clsNavTab:
        return looks.tab;
    case clsDarkListBox: {
        static const Look dark = pageLook(ZTheme::of(ZTheme::Dark));
        return dark;
    }
    default:
        return looks.page;
    }
}

int ZSkinService::toolkitWeight(int weight)
{
    // The named steps of the old scale and what the toolkit calls the same boldness today.
    static constexpr std::array<std::pair<int, int>, 9> steps{{{0, 100},
                                                               {12, 200},
                                                               {25, 300},
                                                               {50, 400},
                                                               {57, 500},
                                                               {63, 600},
                                                               {75, 700},
                                                               {81, 800},
                                                               {87, 900}}};
    const int clamped = std::clamp(weight, 0, 99);
    for (size_t i = 1; i < steps.size(); ++i) {
        const auto [low, lowWeight] = steps[i - 1];
        const auto [high, highWeight] = steps[i];
        if (clamped <= high)
            return lowWeight + (clamped - low) * (highWeight - lowWeight) / (high - low);
    }
    return 900 + (clamped - 87) * 100 / 12;
}

QFont ZSkinService::font(const QString& family, int points, int weight, bool italic)
{
    QFont font(family);
    font.setPixelSize(std::max(points, 1));
    // Fonts that take the place of this one in other scripts have thin faces, too, which are hard
    // to read at these sizes and lack many a character.
    font.setWeight(static_cast<QFont::Weight>(std::max(toolkitWeight(weight), int(QFont::Normal))));
    font.setItalic(italic);
    return font;
}
