#pragma once

#include <QColor>

/// What texts and states need beside their ground or neighbour.
inline constexpr double ContrastOfTexts = 4.5;
inline constexpr double ContrastOfStates = 3;

/// How well two colours are told apart, as the guidelines for accessible content count it: from 1
/// for equal ones to 21 for black and white.
double contrast(const QColor& one, const QColor& other);
