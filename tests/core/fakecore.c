/* A program's own core library: the eight names that the vision library imports, and words to steer their answers. It
 * includes nothing of ours. */
int fakeThreads = 0; /* 0: as many as the word below says */
int fakeCores = 3;
int fakeCacheBytes = 12345;
int fakeStatus = 0;

int threads_omp_of_n_tev = 7;
/* Not the usual NaN: the library must store this one. */
const float tevConstantOfNAN_32f = -__builtin_nanf("");
const double tevConstantOfNAN_64f = -__builtin_nan("");
const double tevConstantOfINF_64f = __builtin_inf();
const double tevConstantOfINF_NEG_64f = -__builtin_inf();

int tevGetNumThreads(int* pNumThreads) {
  *pNumThreads = fakeThreads ? fakeThreads : threads_omp_of_n_tev;
  return fakeStatus;
}
int tevGetNumCoresOnDie(void) { return fakeCores; }
int tevGetMaxCacheSizeB(int* pSizeBytes) {
  *pSizeBytes = fakeCacheBytes;
  return fakeStatus;
}
