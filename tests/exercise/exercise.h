// Exercises: for each public function, code that draws arguments, calls it, and knows what it wrote. One set of them
// serves the digest that all builds must agree on, the fuzzer, the soak, the run with failing allocations, and
// memcheck.
//
// An exercise is a straight line of valid calls:
//
//   void absDiff(Exercise& e) {
//     const TevSize roi = e.size();
//     const auto a = e.in<Tev8u>(roi), b = e.in<Tev8u>(roi);
//     const auto d = e.out<Tev8u>(roi);
//     CALL(e, teviAbsDiff_8u_C1R, a.data, a.step, b.data, b.step, d.data, d.step, roi);
//   }
//
// CALL records the status, and after success every output, into the digest. An error status ends the exercise (nothing
// after the call runs, so resources are held by objects: see Resource). In a spoiling run one argument of one call is
// made bad first: a null pointer, a region or step of 0, a context of zeroes; if the function refuses it, CALL checks
// that nothing was written and makes the proper call next.
//
// Compilers evaluate arguments in any order: draw into variables, not inside an argument list.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "exercise/draw.h"
#include "tevcv.h"

namespace exercise {

// An argument that a spoiling run leaves alone, where the function cannot or need not refuse a bad one.
template <class T>
struct Kept {
  T value;
};
template <class T>
Kept<T> keep(T value) {
  return {value};
}

// A state or context: spoiled into null or into a block of zeroes, which carries no family's mark.
template <class T>
struct Context {
  T* value;
};
template <class T>
Context<T> context(T* value) {
  return {value};
}

template <class T>
struct Image {
  T* data;
  int step;  // bytes
  TevSize size;
  int channels;
};

// What the elements of a drawn image may be.
enum class Values {
  any,     // integers of the whole type, floats of mixed magnitude with now and then a NaN, an infinity, -0.0
  finite,  // as above, without NaN and infinities
  unit,    // floats from 0 to 1; integers from 0 to 255 and the type's reach
  mask,    // 0 or not
  labels,  // small integers 0..7, as areas
};

class Exercise {
 public:
  enum class Memory { guarded, heap };  // unmapped pages around each block; or malloc, for sanitizers and memcheck
  struct Settings {
    Memory memory = Memory::guarded;
    bool large = false;        // regions beyond the gates of the parallel paths
    bool spoil = false;        // make one argument bad
    bool checkOutputs = true;  // compare the outputs around refused calls
  };
  // Thrown by call() to end the exercise after an error status.
  struct Stop {
    TevStatus status;
  };

  Exercise(Draw& draw_, Settings settings) : draw(draw_), settings_(settings) {
    spoilAt_ = settings.spoil ? draw.between(0, 7) : -1;
  }
  ~Exercise();
  Exercise(const Exercise&) = delete;
  Exercise& operator=(const Exercise&) = delete;

  Draw& draw;

  bool large() const { return settings_.large; }
  // A region: mostly small, now and then one pixel, row or column; at least `gate` pixels in a large run.
  TevSize size(int gate = 70000, int smallest = 1, int limit = 40);

  // Images with drawn elements, rows with padding at times, any address, exact size. They live as long as the exercise.
  template <class T>
  Image<T> in(TevSize size, int channels = 1, Values values = Values::any) {
    return image<T>(size, channels, values, Role::input);
  }
  // Overwritten by the function; holds a pattern before.
  template <class T>
  Image<T> out(TevSize size, int channels = 1) {
    return image<T>(size, channels, Values::any, Role::output, false);
  }
  // Read and written.
  template <class T>
  Image<T> inout(TevSize size, int channels = 1, Values values = Values::any) {
    return image<T>(size, channels, values, Role::output);
  }
  // `count` elements in a row, at any address.
  template <class T>
  T* inArray(int count, Values values = Values::any) {
    return image<T>({count, 1}, 1, values, Role::input).data;
  }
  template <class T>
  T* outArray(int count) {
    return image<T>({count, 1}, 1, Values::any, Role::output, false).data;
  }
  // One value that the function writes. Record structs of numbers are fine where they hold no padding or pointers.
  template <class T>
  T* outValue() {
    return outArray<T>(1);
  }
  // A caller's scratch buffer of exactly `bytes`, at any address; holds anything, is never recorded.
  Tev8u* buffer(int bytes);
  // The same for memory that holds what differs from build to build (states, pointers): not recorded, not compared.
  template <class T>
  T* hidden(int count = 1) {
    return static_cast<T*>(block(static_cast<std::size_t>(count) * sizeof(T), Role::scratch, alignof(T)));
  }

  // Adds numbers to the digest that no registered output holds.
  template <class T>
  void record(T value) {
    record(&value, 1);
  }
  template <class T>
  void record(const T* values, std::size_t count);

  template <class R, class... P, class... A>
  R call(const char* name, R (*function)(P...), A... arguments) {
    called_.insert(name);
    if constexpr (std::is_same_v<R, TevStatus>) {
      if (spoilAt_ == 0) {
        spoilAt_ = -1;
        trySpoiled(name, function, arguments...);
      } else if (spoilAt_ > 0) {
        --spoilAt_;
      }
      const TevStatus status = function(plain(arguments)...);
      conclude(name, status);
      return status;
    } else {
      succeeded_.insert(name);
      return function(plain(arguments)...);
    }
  }

  std::uint64_t digest() const { return digest_; }
  const std::set<std::string>& called() const { return called_; }
  const std::set<std::string>& succeeded() const { return succeeded_; }
  const std::string& fault() const { return fault_; }

 private:
  enum class Role { input, output, scratch };
  struct Block {
    unsigned char* data;
    std::size_t size;
    Role role;
    void (*recorder)(Exercise&, const Block&);
    TevSize region;
    int channels;
    int step;
    void* base;
    std::size_t baseSize;
  };

  void* block(std::size_t size, Role role, std::size_t alignment = 1);
  template <class T>
  Image<T> image(TevSize size, int channels, Values values, Role role, bool drawn = true);
  template <class T>
  static void recordImage(Exercise& e, const Block& block);

  template <class T>
  static T plain(T value) {
    return value;
  }
  template <class T>
  static T plain(Kept<T> kept) {
    return kept.value;
  }
  template <class T>
  static T* plain(Context<T> context) {
    return context.value;
  }

  // Bad values, all of which are safe to refuse: none lets a function reach memory that the proper call would not.
  void spoil(TevSize& size) {
    size = draw.anyOf<TevSize>({{0, size.height}, {size.width, 0}, {-1, size.height}, {size.width, INT32_MIN}});
  }
  void spoil(int& value) {
    value = draw.anyOf<int>({0, -1, value > INT32_MIN ? value - 1 : 1, INT32_MIN, value > 0 ? -value : -1});
  }
  void spoil(TevPoint& point) {
    point = draw.anyOf<TevPoint>({{-1, point.y}, {point.x, -1}, {INT32_MAX, point.y}, {point.x, INT32_MAX}});
  }
  void spoil(TevRect& rect) { rect.width = draw.anyOf<int>({0, -1, INT32_MIN}); }
  void spoil(float& value) { value = draw.anyOf<float>({-1, 0, std::numeric_limits<float>::quiet_NaN()}); }
  void spoil(double& value) { value = draw.anyOf<double>({-1, 0, std::numeric_limits<double>::quiet_NaN()}); }
  template <class T>
  void spoil(T*& pointer) {
    pointer = nullptr;
  }
  template <class T>
  void spoil(Context<T>& context) {
    context.value = draw.oneIn(2) ? nullptr : static_cast<T*>(zeroes());
  }
  template <class T>
  void spoil(Kept<T>&) {}
  template <class T>
  void spoil(T& value) requires std::is_integral_v<T> {
    value = 0;
  }

  template <class... P, class... A>
  void trySpoiled(const char* name, TevStatus (*function)(P...), A... arguments) {
    std::tuple<A...> changed(arguments...);
    const auto which = draw.choice(sizeof...(A));
    [&]<std::size_t... I>(std::index_sequence<I...>) {
      (void)((I == which && (spoil(std::get<I>(changed)), true)) || ...);
    }
    (std::index_sequence_for<A...>{});
    const auto before = snapshot();
    const TevStatus status = std::apply([&](auto... values) { return function(plain(values)...); }, changed);
    record(status);
    concludeSpoiled(name, status, which, before);
  }

  void* zeroes();
  std::vector<unsigned char> snapshot() const;
  void conclude(const char* name, TevStatus status);
  void concludeSpoiled(const char* name, TevStatus status, unsigned which, const std::vector<unsigned char>& before);
  void mix(std::uint64_t word) {
    digest_ = (digest_ ^ word) * 0x100000001B3ULL;
    digest_ ^= digest_ >> 29;
  }

  Settings settings_;
  int spoilAt_;
  std::uint64_t digest_ = 0xCBF29CE484222325ULL;
  std::set<std::string> called_, succeeded_;
  std::string fault_;
  std::deque<Block> blocks_;
};

// Frees what a call made, also when the exercise is ended early:
//   Resource<TevMorphState, teviMorphologyFree> state;
//   CALL(e, teviMorphologyInitAlloc_..., &state.pointer, ...);
template <class T, auto release>
struct Resource {
  T* pointer = nullptr;
  Resource() = default;
  Resource(const Resource&) = delete;
  Resource& operator=(const Resource&) = delete;
  ~Resource() {
    if (pointer) release(pointer);
  }
};

struct Entry {
  const char* name;  // the public function, or the group of them, that the exercise is about
  void (*run)(Exercise&);
};

// The names that were called, and those that returned no error to a proper call.
struct Names {
  std::set<std::string> called, succeeded;
};

struct Outcome {
  std::uint64_t digest;
  TevStatus status;   // of the call that ended the exercise, or tevStatusOk
  std::string fault;  // what was wrong with a refused call, empty if nothing
};
Outcome perform(const Entry& entry, Draw draw, Exercise::Settings settings, Names* names = nullptr);

// All exercises, subsystem by subsystem.
std::vector<Entry> arithmetic(), statistics(), integral(), filtering(), morphology(), pyramids(), motion(), distance(),
    segmentation(), features(), geometry(), primitives();
const std::vector<Entry>& entries();

}  // namespace exercise

#define CALL(exercise, function, ...) (exercise).call(#function, &function, __VA_ARGS__)

#include "exercise/memory_inl.h"
