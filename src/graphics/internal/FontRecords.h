// The descriptions that CreateFontIndirect keeps beside the fonts it makes.
#pragma once

class QFont;

namespace CommonGuiLib::internal {

// Drops the description kept for `font`, if any; called when the font is deleted, before
// its address can be reused. Any thread.
void ForgetFontRecord(const QFont* font);

}  // namespace CommonGuiLib::internal
