/* What the linker sees in place of the vision library: its SONAME and the names that the program calls, nothing behind
 * them. At run time the loader finds the real one. */
#include <stddef.h>

void* (*i_malloc)(size_t);
void* (*i_calloc)(size_t, size_t);
void* (*i_realloc)(void*, size_t);
void (*i_free)(void*);

#define NAME(name) \
  void name(void); \
  void name(void) { __builtin_trap(); }

NAME(tevcvGetLibVersion)
NAME(tevsMalloc_8u)
NAME(tevsMalloc_32f)
NAME(tevsMalloc_64f)
NAME(tevsFree)
NAME(teviCopyReplicateBorder_8u_C1R)
NAME(teviMean_StdDev_8u_C1R)
NAME(teviFilterSobelHorizGetBufferSize_8u16s_C1R)
NAME(teviFilterSobelVertGetBufferSize_8u16s_C1R)
NAME(teviFilterSobelHorizBorder_8u16s_C1R)
NAME(teviFilterSobelVertBorder_8u16s_C1R)
NAME(teviCannyGetSize)
NAME(teviCanny_16s8u_C1R)
NAME(teviMorphologyGetSize_8u_C1R)
NAME(teviMorphologyInit_8u_C1R)
NAME(teviMorphologyInitAlloc_8u_C1R)
NAME(teviMorphologyFree)
NAME(teviErodeBorderReplicate_8u_C1R)
NAME(teviDilateBorderReplicate_8u_C1R)
NAME(teviGetDistanceTransformMask_32s)
NAME(teviDistanceTransform_3x3_8u16u_C1R)
NAME(teviSqrIntegral_8u32f64f_C1R)
NAME(teviRectStdDev_32f_C1R)
NAME(teviHaarClassifierInitAlloc_32f)
NAME(teviHaarClassifierFree_32f)
NAME(teviGetHaarClassifierSize_32f)
NAME(teviApplyHaarClassifier_32f_C1R)
NAME(teviPyramidInitAlloc)
NAME(teviPyramidFree)
NAME(teviPyrDownGetBufSize_Gauss5x5)
NAME(teviPyrDown_Gauss5x5_8u_C1R)
NAME(teviOpticalFlowPyrLKInitAlloc_8u_C1R)
NAME(teviOpticalFlowPyrLKFree_8u_C1R)
NAME(teviOpticalFlowPyrLK_8u_C1R)
NAME(teviForegroundGaussianInitAlloc_8u_C1R)
NAME(teviForegroundGaussianFree_8u_C1R)
