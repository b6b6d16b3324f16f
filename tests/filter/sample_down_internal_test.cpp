#include "filter/filter.h"
#include "support/checks.h"

namespace norvala {
namespace {

unsigned char memory[256];

struct Arguments {
  const BW8* src = memory;
  std::int32_t srcStep = 2;
  RegionSize srcSize = {1, 1};
  BW8* dst = memory + 128;
  std::int32_t dstStep = 1;
  RegionSize dstSize = {1, 1};
};

TEST(SampleDownStatusTest, ChecksTheSourceBeforeTheDestination) {
  norvala_test::ExpectChecks("sample down", memory, Arguments(),
                             [](const Arguments& a) {
                               return kSampleDownH2V2_JPEGBW8(a.src, a.srcStep, a.srcSize, a.dst, a.dstStep, a.dstSize);
                             },
                             {{StatusCode::NullPointer, [](Arguments& a) { a.src = nullptr; }},
                              {StatusCode::NonPositiveStep, [](Arguments& a) { a.srcStep = 0; }},
                              {StatusCode::NonPositiveSize, [](Arguments& a) { a.srcSize.width = 0; }},
                              {StatusCode::NonPositiveSize, [](Arguments& a) { a.srcSize.height = 0; }},
                              {StatusCode::NullPointer, [](Arguments& a) { a.dst = nullptr; }},
                              {StatusCode::NonPositiveStep, [](Arguments& a) { a.dstStep = 0; }},
                              {StatusCode::NonPositiveSize, [](Arguments& a) { a.dstSize.width = 0; }},
                              {StatusCode::NonPositiveSize, [](Arguments& a) { a.dstSize.height = 0; }}});
}

}  // namespace
}  // namespace norvala
