#include "support/operation.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <sstream>

namespace norvala_test {

Snapshot Take(const Trial& trial) {
  Snapshot snapshot;
  for (const Image& image : trial.images) snapshot.push_back(image.Bytes());
  return snapshot;
}

// ---- Argument checks ----

Checks operator+(Checks first, const Checks& then) {
  first.insert(first.end(), then.begin(), then.end());
  return first;
}

Change Set(int argument, const Value& value) {
  return [=](Arguments& a) { a[argument] = value; };
}

Check NotNull(int argument) { return {StatusCode::NullPointer, {Set(argument, static_cast<void*>(nullptr))}}; }

Check AtLeast(int argument, Bound bound, StatusCode status) {
  const auto to = [=](int below, std::int64_t most) -> Change {
    return [=](Arguments& a) {
      a[argument] = std::clamp<std::int64_t>(std::min(bound(a) - below, most), INT_MIN, INT_MAX);
    };
  };
  return {status, {to(1, INT_MAX), to(1, 0), to(1, -1), to(1, INT_MIN)}, {to(0, INT_MAX)}};
}

static std::int64_t One(const Arguments& /*arguments*/) { return 1; }
Check Size(int argument) { return AtLeast(argument, One, StatusCode::NonPositiveSize); }
Check Step(int argument) { return AtLeast(argument, One, StatusCode::NonPositiveStep); }

Check RowStep(int argument, int elementSize, int width) {
  Check check = AtLeast(
      argument, [=](const Arguments& a) { return a[width].integer * elementSize; }, StatusCode::NonPositiveStep);
  check.refused.push_back([=](Arguments& a) {
    a[width] = INT_MAX;
    a[argument] = INT_MAX / 2;
  });
  return check;
}

Check NoneOf(int argument, std::initializer_list<Value> refused, std::initializer_list<Value> served,
             StatusCode status) {
  Check check{status, {}};
  for (const Value& value : refused) check.refused.push_back(Set(argument, value));
  for (const Value& value : served) check.served.push_back(Set(argument, value));
  return check;
}

// ---- Operations ----

namespace {

template <class Lacks>
std::vector<Operation> OperationsWithout(Lacks lacks) {
  std::vector<Operation> all;
  for (const auto& family :
       {FrameOperations(), PixelOperations(), FilterOperations(), GeometryOperations(), AnalysisOperations()}) {
    std::remove_copy_if(family.begin(), family.end(), std::back_inserter(all), lacks);
  }
  return all;
}

}  // namespace

std::vector<Operation> WithExport() {
  return OperationsWithout([](const Operation& o) { return o.call.address == nullptr; });
}
std::vector<Operation> WithPrimitive() {
  return OperationsWithout([](const Operation& o) { return o.primitive == nullptr; });
}

// ---- Runs ----

double RelativeError(const std::vector<double>& values, const std::vector<double>& expected) {
  double error = 0;
  double norm = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const bool bothNaN = std::isnan(values[i]) && std::isnan(expected[i]);
    if (values[i] != expected[i] && !bothNaN) error += (values[i] - expected[i]) * (values[i] - expected[i]);
    if (std::isfinite(expected[i])) norm += expected[i] * expected[i];
  }
  return error == 0 ? 0 : std::sqrt(error / norm);
}

namespace {

// Where memory differs, as text; empty if it does not. Floats may be off by the trial's tolerance.
std::string Difference(Trial& trial, const Snapshot& expected) {
  std::ostringstream text;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    Image& image = trial.images[i];
    if (image.Bytes() == expected[i]) continue;
    image.Unify();
    const std::vector<unsigned char> actual = image.Bytes();
    const std::vector<double> values = image.Values();
    image.SetBytes(expected[i]);
    image.Unify();
    const double tolerance = std::max(trial.tolerance, trial.slack);
    if (tolerance > 0) {
      const double error = RelativeError(values, image.Values());
      if (!(error <= tolerance)) text << "image " << i << ": relative error " << error << "; ";
      // What is not a float of the region must be equal.
      image.MapFloats([next = values.begin()](double) mutable { return *next++; });
    }
    const std::vector<unsigned char> unified = image.Bytes();
    const auto place = std::mismatch(actual.begin(), actual.end(), unified.begin());
    if (place.first == actual.end()) continue;
    text << "image " << i << ", step " << image.step() << ", byte " << (place.first - actual.begin()) - image.origin()
         << " after its first pixel: " << int{*place.first} << ", not " << int{*place.second} << "; ";
  }
  return text.str();
}

}  // namespace

std::string Compare(const Operation& operation, Trial& trial, const Arguments& arguments, bool byExport) {
  const Snapshot before = Take(trial);
  const StatusCode status = operation.reference(arguments);
  const Snapshot expected = Take(trial);
  for (std::size_t i = 0; i < before.size(); ++i) trial.images[i].SetBytes(before[i]);
  const auto wanted = byExport ? norvala::Fold(status) : static_cast<std::int64_t>(status);
  const auto result =
      byExport ? operation.CallExport(arguments) : static_cast<std::int64_t>(operation.primitive(arguments));
  if (result != wanted) return "returned " + std::to_string(result) + ", not " + std::to_string(wanted);
  return Difference(trial, expected);
}

RunOutcome Run(const Operation& operation, Trial& trial, AnyFunction address) {
  Arguments arguments = operation.draw(trial);
  if (!operation.checks.empty() && trial.OneIn(4)) {
    const Check& check = trial.Pick(operation.checks);
    trial.Pick(check.refused)(arguments);
  }
  const std::int64_t result = operation.call.invoke(address, arguments);
  RunOutcome outcome{14695981039346656037ULL ^ static_cast<std::uint64_t>(result), {}};
  for (Image& image : trial.images) {
    if (image.holdsPointers()) continue;
    image.Unify();
    const std::vector<double> values = image.Values();
    if (trial.tolerance > 0 && result == 0 && !values.empty()) {
      outcome.approximate.insert(outcome.approximate.end(), values.begin(), values.end());
    } else {
      for (const unsigned char byte : image.Bytes()) outcome.hash = (outcome.hash ^ byte) * 1099511628211ULL;
    }
  }
  return outcome;
}

std::vector<RunOutcome> RunAll(std::uint32_t firstSeed, std::uint32_t seeds,
                               const std::function<AnyFunction(AnyFunction)>& by) {
  std::vector<RunOutcome> outcomes;
  for (const Operation& operation : WithExport()) {
    for (std::uint32_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
      Trial trial(seed);
      outcomes.push_back(Run(operation, trial, by(operation.call.address)));
    }
  }
  return outcomes;
}

}  // namespace norvala_test
