// SPDX-License-Identifier: MIT
#ifndef RENDAL_RECIPES_NUMBER_TEXT_H_
#define RENDAL_RECIPES_NUMBER_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

namespace rendal {

// The shortest text that reads back as the same number, with a point whatever
// the locale; nothing for what is no finite number.
std::string NumberText(double value);

// The whole text as a finite number, written with a point, by the same rule;
// none for any other text.
std::optional<double> NumberFrom(std::string_view text);

// The number whose text a float has: 0.1 for 0.1f. Converts back to the same
// float.
double ShortestDouble(float value);

}  // namespace rendal

#endif  // RENDAL_RECIPES_NUMBER_TEXT_H_
