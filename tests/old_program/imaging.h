/* What the program calls of the two libraries, declared by hand from their manuals as programs did in 2007: records by
 * value, plain C calls, data words. No header of the libraries stands behind it. */
#ifndef IMAGING_H
#define IMAGING_H

#include <stddef.h>

typedef struct {
  int width;
  int height;
} TevSize;

typedef struct {
  int x;
  int y;
} TevPoint;

typedef struct {
  int x;
  int y;
  int width;
  int height;
} TevRect;

typedef struct {
  int majorVersion;
  int minorVersion;
  int buildMajor;
  int buildNumber;
  char cpuTag[4];
  const char* libraryName;
  const char* versionText;
  const char* buildDate;
} TevLibraryVersion;

typedef struct {
  void** images;
  TevSize* roi;
  double* scale;
  int* steps;
  void* state;
  int level;
} TevPyramid;

/* The learned background of a video. */
typedef struct {
  unsigned char* backgroundImage;
  int backgroundStep;
  unsigned char* foregroundImage;
  int foregroundStep;
  int window;
  int numModes;
  double backgroundRatio;
  double matchThreshold;
  double unused[2];
  double initVariance;
  void** pixels;
  int frameCount;
} TevForegroundGaussianState;

typedef struct TevMorphState TevMorphState;
typedef struct TevHaarClassifierState TevHaarClassifierState;
typedef struct TevOptFlowPyrLKState TevOptFlowPyrLKState;

enum { statusOk = 0, statusBadSize = -6, statusNullPtr = -8, statusNoMemory = -9, statusBadStep = -14 };
enum { borderConst = 0, borderReplicate = 1, borderMirror = 3 };
enum { mask3x3 = 33, mask5x5 = 55 };
enum { dataType8u = 1 };
enum { normL2 = 2 };

/* The core library: the number of threads that both libraries work with. */
extern int threads_omp_of_n_tev;
int tevGetNumThreads(int* count);
int tevGetNumCoresOnDie(void);

/* The vision library. */
extern void* (*i_malloc)(size_t size);
extern void* (*i_calloc)(unsigned long count, size_t size);
extern void* (*i_realloc)(void* block, size_t size);
extern void (*i_free)(void* block);

const TevLibraryVersion* tevcvGetLibVersion(void);

unsigned char* tevsMalloc_8u(int len);
float* tevsMalloc_32f(int len);
double* tevsMalloc_64f(int len);
void tevsFree(void* block);

int teviCopyReplicateBorder_8u_C1R(const unsigned char* src, int srcStep, TevSize srcSize, unsigned char* dst,
                                   int dstStep, TevSize dstSize, int top, int left);

int teviMean_StdDev_8u_C1R(const unsigned char* src, int srcStep, TevSize size, double* mean, double* deviation);

int teviFilterSobelHorizGetBufferSize_8u16s_C1R(TevSize size, int mask, int* bufferSize);
int teviFilterSobelVertGetBufferSize_8u16s_C1R(TevSize size, int mask, int* bufferSize);
int teviFilterSobelHorizBorder_8u16s_C1R(const unsigned char* src, int srcStep, short* dst, int dstStep, TevSize size,
                                         int mask, int border, unsigned char value, unsigned char* buffer);
int teviFilterSobelVertBorder_8u16s_C1R(const unsigned char* src, int srcStep, short* dst, int dstStep, TevSize size,
                                        int mask, int border, unsigned char value, unsigned char* buffer);

int teviCannyGetSize(TevSize size, int* bufferSize);
int teviCanny_16s8u_C1R(const short* dx, int dxStep, const short* dy, int dyStep, unsigned char* dst, int dstStep,
                        TevSize size, float low, float high, unsigned char* buffer);

int teviMorphologyGetSize_8u_C1R(int width, const unsigned char* mask, TevSize maskSize, int* stateSize);
int teviMorphologyInit_8u_C1R(int width, const unsigned char* mask, TevSize maskSize, TevPoint anchor,
                              TevMorphState* state);
int teviMorphologyInitAlloc_8u_C1R(int width, const unsigned char* mask, TevSize maskSize, TevPoint anchor,
                                   TevMorphState** state);
int teviMorphologyFree(TevMorphState* state);
int teviErodeBorderReplicate_8u_C1R(const unsigned char* src, int srcStep, unsigned char* dst, int dstStep,
                                    TevSize size, int border, TevMorphState* state);
int teviDilateBorderReplicate_8u_C1R(const unsigned char* src, int srcStep, unsigned char* dst, int dstStep,
                                     TevSize size, int border, TevMorphState* state);

int teviGetDistanceTransformMask_32s(int kernelSize, int norm, int* metrics);
int teviDistanceTransform_3x3_8u16u_C1R(const unsigned char* src, int srcStep, unsigned short* dst, int dstStep,
                                        TevSize size, const int* metrics);

int teviSqrIntegral_8u32f64f_C1R(const unsigned char* src, int srcStep, float* sum, int sumStep, double* square,
                                 int squareStep, TevSize size, float value, double valueSquare);
int teviRectStdDev_32f_C1R(const float* sum, int sumStep, const double* square, int squareStep, float* dst, int dstStep,
                           TevSize size, TevRect window);
int teviHaarClassifierInitAlloc_32f(TevHaarClassifierState** state, const TevRect* features, const float* weights,
                                    const float* thresholds, const float* below, const float* above, const int* counts,
                                    int length);
int teviHaarClassifierFree_32f(TevHaarClassifierState* state);
int teviGetHaarClassifierSize_32f(const TevHaarClassifierState* state, TevSize* size);
int teviApplyHaarClassifier_32f_C1R(const float* sum, int sumStep, const float* norm, int normStep, unsigned char* mask,
                                    int maskStep, TevSize size, int* positive, float threshold,
                                    const TevHaarClassifierState* state);

int teviPyramidInitAlloc(TevPyramid** pyramid, int level, TevSize size, float rate);
int teviPyramidFree(TevPyramid* pyramid);
int teviPyrDownGetBufSize_Gauss5x5(int width, int dataType, int channels, int* bufferSize);
int teviPyrDown_Gauss5x5_8u_C1R(const unsigned char* src, int srcStep, unsigned char* dst, int dstStep, TevSize srcSize,
                                unsigned char* buffer);
int teviOpticalFlowPyrLKInitAlloc_8u_C1R(TevOptFlowPyrLKState** state, TevSize size, int window, int hint);
int teviOpticalFlowPyrLKFree_8u_C1R(TevOptFlowPyrLKState* state);
int teviOpticalFlowPyrLK_8u_C1R(const TevPyramid* first, const TevPyramid* second, const float* prevPoints,
                                float* nextPoints, signed char* status, float* error, int count, int window,
                                int maxLevel, int maxIterations, float threshold, TevOptFlowPyrLKState* state);

int teviForegroundGaussianInitAlloc_8u_C1R(const unsigned char* src, int srcStep, TevSize size, unsigned char* ref,
                                           TevForegroundGaussianState** state);
int teviForegroundGaussianFree_8u_C1R(TevForegroundGaussianState* state);

#endif
