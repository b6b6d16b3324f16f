#pragma once

#include <concepts>
#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "frame/dispatch.h"
#include "norvala.h"
#include "support/image.h"

namespace norvala_test {

using norvala::StatusCode;

// One argument of a call, of any type. A float keeps its bits: what reads it is inlined, since 32-bit functions return
// floats in a register that makes a signalling NaN a quiet one.
struct Value {
  template <class T>
  Value(T* address) : pointer(reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(address))) {}
  template <std::integral T>
  Value(T number) : integer(number), real(static_cast<double>(number)), single(static_cast<float>(number)) {}
  template <std::floating_point T>
  Value(T number) : real(number), single(static_cast<float>(number)) {}

  template <class T>
  [[gnu::always_inline]] T As() const {
    if constexpr (std::is_pointer_v<T>) return reinterpret_cast<T>(pointer);
    if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) return static_cast<T>(integer);
    if constexpr (std::is_same_v<T, float>) return single;
    if constexpr (std::is_same_v<T, double>) return real;
  }

  void* pointer = nullptr;
  std::int64_t integer = 0;
  double real = 0;
  float single = 0;
};

// The arguments of an export in its order; an image stands for its address and step. More may follow for the reference
// or the primitive.
struct Arguments : std::vector<Value> {
  template <class... T>
  Arguments(const T&... values) {
    (Add(values), ...);
  }
  void Add(const Image& image) { insert(end(), {image.data(), image.step()}); }
  void Add(RegionSize size) { insert(end(), {size.width, size.height}); }
  void Add(const Value& value) { push_back(value); }
  Value& operator[](int i) { return at(static_cast<std::size_t>(i)); }
  const Value& operator[](int i) const { return at(static_cast<std::size_t>(i)); }
};

// One call being made up: the choices, and the memory that the call may use.
class Trial : public Choices {
 public:
  using Choices::Choices;

  template <class T>
  Image& New(RegionSize size, const Around& around = {}) {
    return images.emplace_back(*this, size, around, sizeof(T), std::is_floating_point_v<T>, std::is_pointer_v<T>);
  }
  // A vector, such as a kernel; its address.
  template <class T>
  T* Array(std::initializer_list<T> values) {
    Image& image = New<T>({static_cast<int>(values.size()), 1});
    image.Fill<T>([next = values.begin()]() mutable { return *next++; });
    return static_cast<T*>(image.data());
  }
  // Where a result goes.
  template <class T>
  T* Result(int count = 1) {
    return static_cast<T*>(New<T>({count, 1}).data());
  }

  std::deque<Image> images;
  std::vector<std::shared_ptr<void>> objects;  // that the library made, released with the trial
  // For results that rest on the runtime's sine: how far the floats of an image may be off, relative to all of them, in
  // the Euclidean norm.
  double tolerance = 0;
  double slack = 0;  // the same, for exact results whose reference rounds otherwise
};

// All memory of a trial.
using Snapshot = std::vector<std::vector<unsigned char>>;
Snapshot Take(const Trial& trial);

// ---- Calls ----

using AnyFunction = void (*)();

// Takes arguments from the list one after the other. A RegionSize takes two of the list, and a View takes an address
// and a step; a Rect is read from an address.
struct Reader {
  Reader(const Arguments& list) : arguments(list) {}

  template <class T>
  [[gnu::always_inline]] T Read() {
    if constexpr (std::is_same_v<T, RegionSize>) {
      return {Read<std::int32_t>(), Read<std::int32_t>()};
    } else if constexpr (requires { typename T::Pixel; }) {
      return {Read<typename T::Pixel*>(), Read<std::int32_t>()};
    } else if constexpr (std::is_same_v<T, Rect>) {
      return View(Read<Rect*>())(0);
    } else {
      return arguments[next++].As<T>();
    }
  }

  const Arguments& arguments;
  int next = 0;
};

// Calls a function with arguments from the list in their order.
template <class R, class... P>
R Apply(R (*function)(P...), const Arguments& arguments) {
  [[maybe_unused]] Reader reader(arguments);
  return std::apply(function, std::tuple<P...>{reader.Read<P>()...});
}

// The name of a function, out of what the compiler calls an instance of this template.
template <auto function>
std::string NameOf() {
  const std::string text = __PRETTY_FUNCTION__;
  const std::size_t first = text.find("Norvala_");
  return text.substr(first, text.find_first_of("];", first) - first);
}

// An export: its name and address, and how to call what has its type.
struct Export {
  std::string name;
  AnyFunction address = nullptr;
  std::int64_t (*invoke)(AnyFunction, const Arguments&) = nullptr;
};

template <auto function>
Export Call() {
  return {NameOf<function>(), reinterpret_cast<AnyFunction>(function),
          [](AnyFunction f, const Arguments& a) -> std::int64_t {
            return Apply(reinterpret_cast<decltype(function)>(f), a);
          }};
}

// The same for exports whose results are not 0 or -1: a function of the tests, which gets the export before the
// arguments, calls it and makes numbers of what it returns.
template <auto function, auto use>
Export CallBy() {
  return {NameOf<function>(), reinterpret_cast<AnyFunction>(function),
          [](AnyFunction f, const Arguments& a) -> std::int64_t {
            Arguments all = a;
            all.insert(all.begin(), f);
            return Apply(use, all);
          }};
}

// A naive reference takes what the export takes, and more if it likes. It returns nothing, or the status of a call that
// ends with a warning.
using Model = StatusCode (*)(const Arguments&);

template <auto reference>
Model Reference() {
  return [](const Arguments& a) {
    if constexpr (!std::is_void_v<decltype(Apply(+reference, a))>) return Apply(+reference, a);
    Apply(+reference, a);
    return StatusCode::Success;
  };
}

// The table of a primitive, which takes the export's arguments in their order, or those with the given numbers.
template <const auto& table, int... order>
Model Primitive() {
  return [](const Arguments& a) {
    return Apply(table.entries[norvala::ProcessorLevel], sizeof...(order) == 0 ? a : Arguments(a[order]...));
  };
}

// ---- Argument checks ----

using Change = std::function<void(Arguments&)>;

// An argument check of a primitive: the status that it gives, changes of served arguments that make it fail, from the
// last value refused to the extremes, and changes to the first values that it lets through.
struct Check {
  StatusCode status;
  std::vector<Change> refused;
  std::vector<Change> served = {};
};
using Checks = std::vector<Check>;

Checks operator+(Checks first, const Checks& then);

using Bound = std::function<std::int64_t(const Arguments&)>;
inline Change Set(int argument, const Value& value) {
  return [=](Arguments& a) { a[argument] = value; };
}
inline Check NotNull(int argument) { return {StatusCode::NullPointer, {Set(argument, static_cast<void*>(nullptr))}}; }
Check AtLeast(int argument, Bound bound, StatusCode status);
inline std::int64_t One(const Arguments& /*arguments*/) { return 1; }
inline Check Size(int argument) { return AtLeast(argument, One, StatusCode::NonPositiveSize); }
inline Check Step(int argument) { return AtLeast(argument, One, StatusCode::NonPositiveStep); }
// A step that must cover `elementSize` bytes for each of the elements that another argument counts.
Check RowStep(int argument, int elementSize, int width);
Check NoneOf(int argument, std::initializer_list<Value> refused, std::initializer_list<Value> served,
             StatusCode status);

// ---- Operations ----

// Everything that tests know of an export: how to make up arguments that it serves, what it computes, and what it
// refuses. A primitive that can do more than its export has a row of its own, which has a name but no export.
struct Operation {
  Export call;
  Model primitive;
  Arguments (*draw)(Trial&);
  Model reference;
  Checks checks;

  friend void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.call.name; }
  std::int64_t CallExport(const Arguments& arguments) const { return call.invoke(call.address, arguments); }
};

// What a parameterised test is called by.
inline constexpr auto NameOfRow = [](const auto& row) { return row.param.call.name; };

// A row for an export that passes its arguments on to a primitive, in their order or those with the given numbers.
template <auto call, const auto& table, auto draw, auto reference, int... order>
Operation Row(Checks checks) {
  return {Call<call>(), Primitive<table, order...>(), draw, Reference<reference>(), std::move(checks)};
}

// All operations that have one, family by family.
std::vector<Operation> WithExport();
std::vector<Operation> WithPrimitive();

std::vector<Operation> FrameOperations();
std::vector<Operation> PixelOperations();
std::vector<Operation> FilterOperations();
std::vector<Operation> GeometryOperations();
std::vector<Operation> AnalysisOperations();

// ---- Runs ----

// Makes up a call, changes its arguments, makes it, and compares its result and all memory with what the reference
// gives; what differs, as text. A call that must be refused has a status and leaves every byte as it is. An export
// folds the status to 0 or -1.
std::string Compare(const Operation& operation, bool byExport, std::uint32_t seed, const Change& change = {},
                    StatusCode refusal = StatusCode::Success);

// The error of all values together, relative to them. Those that are not finite must be equal.
double RelativeError(const std::vector<double>& values, const std::vector<double>& expected);

// What a call returned and wrote: a hash, and the numbers of results that rest on the runtime's sine.
struct RunOutcome {
  std::uint64_t hash = 0;
  std::vector<double> approximate;

  // Equal hashes go with as many numbers: what a call returned decides that and is part of the hash.
  bool operator==(const RunOutcome& o) const {
    return hash == o.hash && RelativeError(approximate, o.approximate) == 0;
  }
};

// Makes up a call, now and then one with an argument that must be refused, and makes it at the given address.
RunOutcome Run(const Operation& operation, Trial& trial, AnyFunction address);

// Runs all exports, each with some seeds, at addresses made of theirs.
std::vector<RunOutcome> RunAll(std::uint32_t firstSeed, std::uint32_t seeds,
                               const std::function<AnyFunction(AnyFunction)>& by = std::identity());

}  // namespace norvala_test
