// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/geometry.h"
#include "tevcv_internal/export.h"

// The values 0 to 255 as floats.
TEV_WORKER const Tev32f own8u32fTab[256];

// The part of a rectangle of `dstRoiSize` pixels around a point that lies inside the source: columns minPoint->x to
// maxPoint->x of rows minPoint->y to maxPoint->y of `dst` are written, the rest is left alone. Steps count bytes.
TEV_WORKER TevStatus ownGetRectSubpix_8u_C1R(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev8u* dst, int dstStep,
                                             TevSize dstRoiSize, Tev32f centerX, Tev32f centerY, TevPoint* minPoint,
                                             TevPoint* maxPoint);
TEV_WORKER TevStatus ownGetRectSubpix_8u16u_C1R_Sfs(const Tev8u* src, int srcStep, TevSize srcRoiSize, Tev16u* dst,
                                                    int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                                    TevPoint* minPoint, TevPoint* maxPoint, int scaleFactor);
TEV_WORKER TevStatus ownGetRectSubpix_16u_C1R(const Tev16u* src, int srcStep, TevSize srcRoiSize, Tev16u* dst,
                                              int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                              TevPoint* minPoint, TevPoint* maxPoint);
TEV_WORKER TevStatus ownGetRectSubpix_16u32f_C1R(const Tev16u* src, int srcStep, TevSize srcRoiSize, Tev32f* dst,
                                                 int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                                 TevPoint* minPoint, TevPoint* maxPoint);
TEV_WORKER TevStatus ownGetRectSubpix_32f_C1R(const Tev32f* src, int srcStep, TevSize srcRoiSize, Tev32f* dst,
                                              int dstStep, TevSize dstRoiSize, Tev32f centerX, Tev32f centerY,
                                              TevPoint* minPoint, TevPoint* maxPoint);
