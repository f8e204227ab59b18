/* Geometry: lens undistortion and sub-pixel copies. */
#ifndef TEVCV_GEOMETRY_H
#define TEVCV_GEOMETRY_H

#include "tevcv/types.h"

/**
 * @defgroup geometry Geometry
 * Lens undistortion and sub-pixel copies.
 * @image html geometry.png
 * @{
 */

/**
 * @name Radial undistortion
 * Removes a lens's radial distortion (and, in the map builder, tangential distortion). With the focal lengths `fx`,
 * `fy` and the principal point (`cx`, `cy`), all in pixels, \f$u = x - cx\f$, \f$v = y - cy\f$ and
 * \f$r^2 = u^2 / fx^2 + v^2 / fy^2\f$, the pixel (x, y) of the result comes from
 *
 * \f[ sx = x + u D, \qquad sy = y + v D, \qquad D = k_1 r^2 + k_2 r^4 \f]
 *
 * of the source. The map builder writes these positions to two float maps without any test of bounds. With tangential
 * coefficients, xn = u / fx, yn = v / fy, it takes
 *
 * \f[ D = 2 p_2 xn + 2 p_1 yn + k_1 r^2 + k_2 r^4, \f]
 * \f[ xMap(x, y) = fx \, p_2 r^2 + x + u D, \qquad yMap(x, y) = fy \, p_1 r^2 + y + v D. \f]
 *
 * The warp samples the source where 0 <= sx < width - 1 and 0 <= sy < height - 1, and leaves every other pixel of `dst`
 * as it was: a caller who wants a defined value there clears `dst` first. A sample mixes the four pixels around the
 * position, with the fractions a = sx - floor(sx), b = sy - floor(sy):
 *
 * \f[ a b \, src(x + 1, y + 1) + b (1 - a) \, src(x + 1, y) + (1 - a)(1 - b) \, src(x, y)
 *     + a (1 - b) \, src(x, y + 1). \f]
 *
 * The pixel to the right takes the vertical fraction and the pixel below the horizontal one, unlike the plain bilinear
 * rule; images that callers have stored depend on it. Integer results are rounded by adding 0.5 and truncating.
 *
 * `buffer` may be null. Otherwise it holds what teviUndistortGetSize tells for the region, at any address, and the call
 * keeps a table of its columns there, rounded to floats; the two ways may differ in the last bits of a position, and so
 * by one in integer results. Images must not overlap.
 *
 * Literature: D. C. Brown, "Decentering distortion of lenses", Photogrammetric Engineering, 1966.
 * @return #tevStatusNullPtr (an image, a map or `bufferSize`), #tevStatusBadSize (width or height below 1),
 *         #tevStatusBadStep (a step shorter than the row), #tevStatusStepNotAligned (a step that is no multiple of the
 *         element's size), #tevStatusBadArg (`fx` or `fy` zero or NaN), in that order.
 * @{
 */
TEV_API TevStatus teviUndistortGetSize(TevSize roiSize, int* bufferSize);
TEV_API TevStatus teviUndistortRadial_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                             Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2,
                                             Tev8u* buffer);
TEV_API TevStatus teviUndistortRadial_16u_C1R(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                              Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2,
                                              Tev8u* buffer);
TEV_API TevStatus teviUndistortRadial_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                              Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2,
                                              Tev8u* buffer);
TEV_API TevStatus teviUndistortRadial_8u_C3R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                             Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2,
                                             Tev8u* buffer);
TEV_API TevStatus teviUndistortRadial_16u_C3R(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                              Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2,
                                              Tev8u* buffer);
TEV_API TevStatus teviUndistortRadial_32f_C3R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                              Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy, Tev32f k1, Tev32f k2,
                                              Tev8u* buffer);
TEV_API TevStatus teviCreateMapCameraUndistort_32f_C1R(Tev32f* xMap, int xMapStep, Tev32f* yMap, int yMapStep,
                                                       TevSize roiSize, Tev32f fx, Tev32f fy, Tev32f cx, Tev32f cy,
                                                       Tev32f k1, Tev32f k2, Tev32f p1, Tev32f p2, Tev8u* buffer);
/** @} */

/**
 * @name Copy at a fractional offset
 * dst(x, y) is the source between (x, y) and (x + 1, y + 1), at the fractions of `dx` and `dy`: bilinear interpolation.
 * `src` points at the integer position; whole parts of the offsets play no role, and -0.25 has the fraction 0.75. `src`
 * holds `width` + 1 by `height` + 1 pixels, `dst` `width` by `height`; they must not overlap.
 *
 * The integer forms weigh with fixed-point fractions of 14 bits (8-bit source) or 15 bits (16-bit source). The form
 * with `scaleFactor` stores value * 2^-scaleFactor without saturation; -7 gives pixels times 128. The float forms
 * raise a horizontal fraction below 1e-6 to 1e-6, so that each pixel's left half can be had from the right half of the
 * pixel before it; they work in extended precision and round once.
 * @return #tevStatusNullPtr, #tevStatusBadSize (width or height below 1), #tevStatusBadStep (a step shorter than
 *         `width` elements), #tevStatusStepNotAligned (a step that is no multiple of the element's size), in that
 *         order. `scaleFactor` is not tested; shifts are taken modulo 32.
 * @{
 */
TEV_API TevStatus teviCopySubpix_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                        Tev32f dx, Tev32f dy);
TEV_API TevStatus teviCopySubpix_8u16u_C1R_Sfs(const Tev8u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                               Tev32f dx, Tev32f dy, int scaleFactor);
TEV_API TevStatus teviCopySubpix_16u_C1R(const Tev16u* src, int srcStep, Tev16u* dst, int dstStep, TevSize roiSize,
                                         Tev32f dx, Tev32f dy);
TEV_API TevStatus teviCopySubpix_8u32f_C1R(const Tev8u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                           Tev32f dx, Tev32f dy);
TEV_API TevStatus teviCopySubpix_16u32f_C1R(const Tev16u* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                            Tev32f dx, Tev32f dy);
TEV_API TevStatus teviCopySubpix_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                         Tev32f dx, Tev32f dy);
/** @} */

/**
 * @name Copy of a rectangle around a point
 * `dst` receives the rectangle of `dstRoiSize` pixels centred on (`centerX`, `centerY`) of the source, interpolated
 * bilinearly; its top-left pixel lies at centre - (size - 1) / 2. Outside the source the nearest pixels of its edge
 * stand. `minPoint` and `maxPoint` receive the first and last column and row of `dst` that lie wholly inside; a
 * rectangle outside gives an empty span, such as 0 to -1.
 *
 * Above the source, the columns right of it repeat the pixel before the last one; beside it and below it they repeat
 * the last one. In the float forms fractions have no lower bound.
 * @return #tevStatusNullPtr, #tevStatusBadSize (a width or height below 1), #tevStatusBadStep (a step shorter than a
 *         row of its own image), #tevStatusStepNotAligned, in that order.
 * @{
 */
TEV_API TevStatus teviCopySubpixIntersect_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst,
                                                 int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                                 TevPoint* minPoint, TevPoint* maxPoint);
TEV_API TevStatus teviCopySubpixIntersect_8u16u_C1R_Sfs(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev16u* dst,
                                                        int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                                        TevPoint* minPoint, TevPoint* maxPoint, int scaleFactor);
TEV_API TevStatus teviCopySubpixIntersect_16u_C1R(const Tev16u* src, int srcStep, TevSize srcRoiSize, Tev16u* dst,
                                                  int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                                  TevPoint* minPoint, TevPoint* maxPoint);
TEV_API TevStatus teviCopySubpixIntersect_8u32f_C1R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev32f* dst,
                                                    int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                                    TevPoint* minPoint, TevPoint* maxPoint);
TEV_API TevStatus teviCopySubpixIntersect_16u32f_C1R(const Tev16u* src, int srcStep, TevSize srcRoiSize, Tev32f* dst,
                                                     int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                                     TevPoint* minPoint, TevPoint* maxPoint);
TEV_API TevStatus teviCopySubpixIntersect_32f_C1R(const Tev32f* src, int srcStep, TevSize srcRoiSize, Tev32f* dst,
                                                  int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                                  TevPoint* minPoint, TevPoint* maxPoint);
/** @} */

/** @} */

#endif
