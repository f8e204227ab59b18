// Results drawn over a picture: points, lines, boxes, arrows. Integer arithmetic throughout, clipped at the edges.
#pragma once

#include "cli/image.h"

namespace cli {

struct Colour {
  Tev8u red, green, blue;
};
inline constexpr Colour red{230, 40, 40}, green{40, 200, 80}, blue{60, 120, 250}, yellow{250, 210, 40},
    white{255, 255, 255};

// All paint on images of three channels. A pen of width `pen` paints squares of that many pixels.
void paintPoint(Image<Tev8u>& image, int x, int y, Colour colour, int pen = 1);
void paintLine(Image<Tev8u>& image, double x0, double y0, double x1, double y1, Colour colour, int pen = 1);
void paintArrow(Image<Tev8u>& image, double x0, double y0, double x1, double y1, Colour colour, int pen = 1);
void paintBox(Image<Tev8u>& image, TevRect box, Colour colour, int pen = 2);
void paintCircle(Image<Tev8u>& image, double x, double y, double radius, Colour colour, int pen = 1);
void paintCross(Image<Tev8u>& image, int x, int y, int arm, Colour colour, int pen = 1);
// Where `mask` is not 0 the picture takes half of the colour.
void paintMask(Image<Tev8u>& image, const Image<Tev8u>& mask, Colour colour);

// Images of one height side by side, or of one width one below the other, with a gap of white pixels.
Image<Tev8u> beside(const Image<Tev8u>& left, const Image<Tev8u>& right, int gap = 4);
Image<Tev8u> below(const Image<Tev8u>& top, const Image<Tev8u>& bottom, int gap = 4);

}  // namespace cli
