// CommonGuiLib image, icon and font helpers: loading shared bitmaps and icons from files
// and module resources, wrapping fonts, premultiplying alpha, painting gradients and
// tiling a bitmap over a rectangle.
//
// Bitmaps are 32-bit ARGB images (blue, green, red, alpha bytes per pixel in memory, as a
// 32-bit device-independent bitmap). Pixel rules (premultiply, gradient stripes, tiles) are
// done on the pixels here, so results are exact.
//
// Failures: every loader returns a holder even on failure, with a null handle; callers
// test it with HasHandle. Nothing here throws except std::bad_alloc.
// Thread safety: loaders and pixel functions from any thread; painting on a QPainter on
// the thread that owns its device.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "graphics/SharedGDIObject.h"

class QPainter;

namespace CommonGuiLib {

struct GradientColor {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
};

// 0 horizontal (left to right), 1 vertical (top to bottom), 2 diagonal from top-left,
// 3 diagonal from top-right.
enum GradientOrientation : uint32_t {
    Gradient_Horizontal = 0,
    Gradient_Vertical = 1,
    Gradient_DiagonalTLBR = 2,
    Gradient_DiagonalTRBL = 3,
};

struct GradientDescription {
    int32_t width = 0;
    int32_t height = 0;
    uint32_t orientation = Gradient_Horizontal;
    std::map<double, GradientColor> stops;  // position 0.0..1.0 to colour
};

struct Rect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
    int32_t Width() const { return right - left; }
    int32_t Height() const { return bottom - top; }
};

// Any image file Qt decodes (BMP, PNG, ICO, ...), as a 32-bit bitmap; alpha is kept when
// the file has it, else every pixel is opaque.
SharedBitmap LoadBitmapFromFile(const std::wstring& path);
// Bitmap resource `id` (or `name`) of a module: the running executable when `modulePath`
// is empty, else a .res, ELF or PE file.
SharedBitmap LoadBitmapResource(uint32_t id, const std::wstring& modulePath = {});
SharedBitmap LoadBitmapResource(const std::wstring& name, const std::wstring& modulePath = {});
// An .ico file's image closest to cx x cy, at the image's own size when cx and cy are 0,
// else scaled to cx x cy.
SharedIcon LoadIconFromFile(const std::wstring& path, int32_t cx, int32_t cy);
// Group icon `id` (or `name`) of a module (empty path: the running executable), sized as
// LoadIconFromFile.
SharedIcon LoadIconFromModule(const std::wstring& modulePath, uint32_t id, int32_t cx, int32_t cy);
SharedIcon LoadIconFromModule(const std::wstring& modulePath, const std::wstring& name, int32_t cx,
                              int32_t cy);
// Icon `index` of "file,index": a group icon of a .res, ELF or PE file, or an image of an
// .ico file; the large (32 x 32) or the small (16 x 16) form.
SharedIcon ExtractIconFromFile(const std::wstring& file, uint32_t index, bool large);

// A blank 32-bit bitmap (every byte 0), as a new bitmap compatible with the screen is.
// A null handle when the size is not positive.
SharedBitmap CreateCompatibleBitmap(int32_t width, int32_t height);
// Sets the alpha byte of every pixel to 255.
void SetOpaque(const SharedBitmap& bitmap);
// Size and depth; 0 for an empty holder.
int32_t BitmapWidth(const SharedBitmap& bitmap);
int32_t BitmapHeight(const SharedBitmap& bitmap);
int32_t BitmapBitsPerPixel(const SharedBitmap& bitmap);
// The pixel as 0xAARRGGBB; 0 outside the bitmap.
uint32_t GetPixelArgb(const SharedBitmap& bitmap, int32_t x, int32_t y);
// Icons are images too.
int32_t IconWidth(const SharedIcon& icon);
int32_t IconHeight(const SharedIcon& icon);

// Colour bytes become c * alpha / 255 (rounded down). Unless `force`, only when the
// screen has 32 bits per pixel; never for bitmaps of fewer than 32.
void PremultiplyAlpha(const SharedBitmap& bitmap, bool force);
SharedBitmap CopyBitmapPremultiplied(const SharedBitmap& bitmap);

// Paints `gradient` with its top-left corner at (x, y); areas the gradient does not cover
// keep what was there.
void PaintGradient(QPainter& dc, int32_t x, int32_t y, const GradientDescription& gradient);
void PaintGradient(const SharedBitmap& target, int32_t x, int32_t y,
                   const GradientDescription& gradient);

// Tiles `image` over `rect` from its top-left corner, copying or (with transparency or
// per-pixel alpha) blending each tile. Draws nothing for an empty holder.
void DrawTiled(QPainter& dc, const SharedBitmap& image, const Rect& rect,
               uint32_t transparencyPercent, bool perPixelAlpha, bool alreadyPremultiplied);

// A font as a LOGFONT describes it: a negative height is the character height in pixels,
// a positive one the cell height (ascent plus descent), 0 the default size.
struct LogFont {
    int32_t height = 0;
    int32_t width = 0;        // average character width in pixels; 0 the face's own
    int32_t escapement = 0;   // angle of the text line, tenths of a degree counter-clockwise
    int32_t orientation = 0;  // angle of each character, tenths of a degree
    int32_t weight = 0;       // 0 default, 400 normal, 700 bold, up to 1000
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    uint8_t charSet = 0;  // 0 ANSI_CHARSET, 1 DEFAULT_CHARSET, ...
    uint8_t quality = 0;
    std::wstring faceName;
};

// A font made as `font` describes. Positive heights and widths are measured with the font
// database, which needs a running GUI (GuiSession); without one the cell height is used
// as the character height. Any thread that may use Qt's fonts.
SharedFont CreateFontIndirect(const LogFont& font);
// A holder owning `font`.
SharedFont WrapFont(QFont* font);
// What a font holder describes, in LOGFONT terms: for a font made by CreateFontIndirect,
// exactly the description it was made from; for any other, what Qt reports of it.
LogFont DescribeFont(const SharedFont& font);

}  // namespace CommonGuiLib
