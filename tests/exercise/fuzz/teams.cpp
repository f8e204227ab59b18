// OpenMP for the fuzzer: the members of a team run one after another in the calling thread, so that an input takes the
// same path each time and the sanitizers see no threads. The library's regions hold no barrier: shares are dealt to
// whatever team came, and phases are regions of their own. These are the entry points that clang calls for them.
#include <cstdarg>
#include <cstdlib>
#include <utility>

namespace {

constexpr int mostArguments = 12;
int asked = 1, members = 1, member = 0;

template <std::size_t... I>
void invoke(void (*task)(), int* id, void** a, std::index_sequence<I...>) {
  using Task = void (*)(int*, int*, decltype(static_cast<void>(I), static_cast<void*>(nullptr))...);
  reinterpret_cast<Task>(task)(id, id, a[I]...);
}

template <int count = 0>
void invoke(int wanted, void (*task)(), int* id, void** a) {
  if constexpr (count > mostArguments)
    std::abort();
  else if (wanted == count)
    invoke(task, id, a, std::make_index_sequence<count>());
  else
    invoke<count + 1>(wanted, task, id, a);
}

}  // namespace

extern "C" {

int omp_get_num_threads() { return members; }
int omp_get_thread_num() { return member; }

int __kmpc_global_thread_num(void*) { return 0; }
void __kmpc_push_num_threads(void*, int, int threads) { asked = threads; }

void __kmpc_fork_call(void*, int count, void (*task)(), ...) {
  void* arguments[mostArguments];
  if (count > mostArguments) std::abort();
  std::va_list list;
  va_start(list, task);
  for (int i = 0; i < count; ++i) arguments[i] = va_arg(list, void*);
  va_end(list);

  const int outerMembers = members, outerMember = member;
  members = outerMembers > 1 ? 1 : asked;  // a region inside a region has one member
  asked = 1;
  const int team = members;
  for (int i = 0; i < team; ++i) {
    member = i;
    int id = i;
    invoke(count, task, &id, arguments);
  }
  members = outerMembers;
  member = outerMember;
}

}  // extern "C"
