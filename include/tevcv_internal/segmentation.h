// Workers and tables of this subsystem that the shared library exports. They make no checks.
#pragma once

#include "tevcv/segmentation.h"
#include "tevcv_internal/export.h"

// Boundaries between labelled regions, in place: of two neighbours with different labels the one of higher cost becomes
// boundary, on equal cost the later one (right, below). `cost` has a row step in bytes and any address. `mode` 1
// compares 4 neighbours, any other value 8; a width of 1 always takes 4.
TEV_WORKER void ownBoundSegments_8u_C1IR(Tev8u* markers, int markerStep, const Tev32s* cost, int costStep, int width,
                                         int height, Tev8u boundaryValue, int mode);

// --- Watershed and gradient segmentation ----------------------------------------------------------------------------

// A pixel that waits in a queue. Nodes stand in the caller's buffer, at any address.
struct __attribute__((packed)) WSNode {
  WSNode* next;
  uint32_t labelIndex;   // of the pixel in the working label image
  uint32_t sourceIndex;  // of the pixel in the source: y * srcStep + x * channels, modulo 2^32
};
static_assert(sizeof(WSNode) == sizeof(void*) + 8);

// Links nodes first .. width * height - 1 into a free list, each to the one behind it and the last to null; returns
// the first.
TEV_WORKER WSNode* ownAllocWSNodes(WSNode* nodes, int first, int width, int height);
// The flooding method of teviSegmentWatershed_8u_C1IR: norm 0 or 1.
TEV_WORKER TevStatus ownSegmentWaterhedPQ_8u_C1IR(const Tev8u* src, int srcStep, Tev8u* markers, int markerStep,
                                                  TevSize roiSize, int norm, uint32_t flags, Tev8u* buffer);
