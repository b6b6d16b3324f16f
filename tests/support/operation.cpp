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

Check AtLeast(int argument, Bound bound, StatusCode status) {
  const auto to = [=](int below, std::int64_t most) -> Change {
    return [=](Arguments& a) {
      a[argument] = std::clamp<std::int64_t>(std::min(bound(a) - below, most), INT_MIN, INT_MAX);
    };
  };
  return {status, {to(1, INT_MAX), to(1, 0), to(1, -1), to(1, INT_MIN)}, {to(0, INT_MAX)}};
}

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

static std::vector<Operation> Operations(bool (*lacks)(const Operation&)) {
  std::vector<Operation> all;
  for (const auto& family :
       {FrameOperations(), PixelOperations(), FilterOperations(), GeometryOperations(), AnalysisOperations()}) {
    std::remove_copy_if(family.begin(), family.end(), std::back_inserter(all), lacks);
  }
  return all;
}
std::vector<Operation> WithExport() {
  return Operations([](auto& o) { return o.call.address == nullptr; });
}
std::vector<Operation> WithPrimitive() {
  return Operations([](auto& o) { return o.primitive == nullptr; });
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

// The first place where memory differs, as text; empty if none does. Floats may be off by the trial's tolerance.
static std::string Difference(Trial& trial, const Snapshot& expected) {
  for (std::size_t i = 0; i < expected.size(); ++i) {
    Image& image = trial.images[i];
    if (image.Bytes() == expected[i]) continue;
    image.Unify();
    const std::vector<unsigned char> actual = image.Bytes();
    const std::vector<double> values = image.Values();
    image.SetBytes(expected[i]);
    image.Unify();
    const double tolerance = std::max(trial.tolerance, trial.slack);
    const double error = RelativeError(values, image.Values());
    const auto taken = [next = values.begin()](double) mutable { return *next++; };
    if (tolerance > 0 && error <= tolerance) image.MapFloats(taken);  // all else must be equal
    const std::vector<unsigned char> unified = image.Bytes();
    const auto [place, wanted] = std::mismatch(actual.begin(), actual.end(), unified.begin());
    if (place == actual.end()) continue;
    std::ostringstream text;
    text << "image " << i << ", step " << image.step() << ", byte " << (place - actual.begin()) - image.origin()
         << " after its first pixel: " << int{*place} << ", not " << int{*wanted} << "; relative error " << error;
    return text.str();
  }
  return "";
}

std::string Compare(const Operation& operation, bool byExport, std::uint32_t seed, const Change& change,
                    StatusCode refusal) {
  Trial trial(seed);
  Arguments arguments = operation.draw(trial);
  if (change) change(arguments);
  const Snapshot before = Take(trial);
  const bool isServed = refusal == StatusCode::Success;
  const StatusCode status = isServed ? operation.reference(arguments) : refusal;
  const Snapshot expected = Take(trial);
  for (std::size_t i = 0; i < before.size(); ++i) trial.images[i].SetBytes(before[i]);
  const auto code = [](StatusCode of) { return static_cast<std::int64_t>(of); };
  const std::int64_t wanted = byExport ? norvala::Fold(status) : code(status);
  const std::int64_t result = byExport ? operation.CallExport(arguments) : code(operation.primitive(arguments));
  if (result != wanted) return "returned " + std::to_string(result) + ", not " + std::to_string(wanted);
  if (!isServed) return Take(trial) == expected ? "" : "a refused call wrote";
  return Difference(trial, expected);
}

RunOutcome Run(const Operation& operation, Trial& trial, AnyFunction address) {
  Arguments arguments = operation.draw(trial);
  if (!operation.checks.empty() && trial.OneIn(4)) trial.Pick(trial.Pick(operation.checks).refused)(arguments);
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
