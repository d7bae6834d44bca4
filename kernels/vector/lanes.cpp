// The outputs of the eight lanes, and the variates that need nothing but one of them.
//
// The first half of this file is compiled once for each set of instructions, in a namespace each;
// the second half picks among them at run time.  All give the same bits.
#include "kernels/variates/lanes.hpp"

#include "kernels/variates/ziggurat.hpp"

#ifdef VEXEL_HAVE_HIGHWAY

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/lanes.cpp"
#include "kernels/vector/each_target.hpp"
// After it:
#include <hwy/cache_control.h>

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::CappedTag<std::uint64_t, laneCount>;
using Doubles = hn::Rebind<double, Words>;
using WordVector = hn::Vec<Words>;
using DoubleVector = hn::Vec<Doubles>;

// unitInterval of ziggurat.hpp.
HWY_INLINE DoubleVector unitIntervals(WordVector bits) {
  const WordVector one = hn::Set(Words(), 0x3FF0000000000000U);
  return hn::Sub(hn::BitCast(Doubles(), hn::Or(hn::ShiftRight<12>(bits), one)),
                 hn::Set(Doubles(), 1.0 - 0x1p-53));
}

// Some lanes stay in registers for a stretch of rounds, then the next ones take their turn.
template <typename Tag, typename Out, typename Map>
HWY_INLINE void draw(Lanes& lanes, Out* out, std::size_t rounds, Tag tag, Map map) {
  constexpr std::size_t stretch = 64;
  const Words words;
  const std::size_t width = hn::Lanes(words);
  for (std::size_t done = 0; done < rounds; done += stretch) {
    const std::size_t count = rounds - done < stretch ? rounds - done : stretch;
    for (std::size_t l = 0; l < laneCount; l += width) {
      WordVector a = hn::LoadU(words, &lanes[0][l]);
      WordVector b = hn::LoadU(words, &lanes[1][l]);
      WordVector c = hn::LoadU(words, &lanes[2][l]);
      WordVector d = hn::LoadU(words, &lanes[3][l]);
      Out* at = out + done * laneCount + l;
      for (std::size_t r = 0; r < count; ++r, at += laneCount) {
        const WordVector bits = hn::Add(hn::RotateRight<64 - 23>(hn::Add(a, d)), a);
        hn::StoreU(map(bits), tag, at);
        const WordVector shifted = hn::ShiftLeft<17>(b);
        c = hn::Xor(c, a);
        d = hn::Xor(d, b);
        b = hn::Xor(b, c);
        a = hn::Xor(a, d);
        c = hn::Xor(c, shifted);
        d = hn::RotateRight<64 - 45>(d);
      }
      hn::StoreU(a, words, &lanes[0][l]);
      hn::StoreU(b, words, &lanes[1][l]);
      hn::StoreU(c, words, &lanes[2][l]);
      hn::StoreU(d, words, &lanes[3][l]);
    }
  }
}

void drawBits(Lanes& lanes, std::uint64_t* out, std::size_t rounds) {
  draw(lanes, out, rounds, Words(), [](WordVector bits) HWY_ATTR { return bits; });
}

void drawUniforms(Lanes& lanes, double* out, std::size_t rounds) {
  draw(lanes, out, rounds, Doubles(), [](WordVector bits) HWY_ATTR { return unitIntervals(bits); });
}

// finish(x, bits) of the abscissas that lie in their layer whatever the height.
template <typename Finish>
HWY_INLINE std::size_t accept(const std::uint64_t* bits, double* out, std::size_t n,
                              const double* edges, Finish finish) {
  const Words words;
  const Doubles doubles;
  const hn::RebindToSigned<Words> indices;
  const std::size_t width = hn::Lanes(words);
  std::size_t i = 0;
  for (; i + width <= n; i += width) {
    const WordVector drawn = hn::LoadU(words, bits + i);
    const auto layer =
        hn::BitCast(indices, hn::And(drawn, hn::Set(words, std::uint64_t{zigguratLayers - 1})));
    const DoubleVector x = hn::Mul(unitIntervals(drawn), hn::GatherIndex(doubles, edges, layer));
    const auto out_of_layer = hn::Ge(x, hn::GatherIndex(doubles, edges + 1, layer));
    hn::StoreU(finish(x, drawn), doubles, out + i);
    const std::intptr_t first = hn::FindFirstTrue(doubles, out_of_layer);
    if (first >= 0) {
      return i + static_cast<std::size_t>(first);
    }
  }
  return i;
}

std::size_t acceptNormals(const std::uint64_t* bits, double* out, std::size_t n) {
  return accept(bits, out, n, normalEdges, [](DoubleVector x, WordVector drawn) HWY_ATTR {
    const WordVector sign = hn::ShiftLeft<52>(hn::And(drawn, hn::Set(Words(), 0x800U)));
    return hn::Or(x, hn::BitCast(Doubles(), sign));
  });
}

std::size_t acceptExponentials(const std::uint64_t* bits, double* out, std::size_t n) {
  return accept(bits, out, n, exponentialEdges,
                [](DoubleVector x, WordVector) HWY_ATTR { return x; });
}

void copyPastCaches(const double* from, double* out, std::size_t n) {
  const hn::CappedTag<double, 8> tag;
  const std::size_t width = hn::Lanes(tag);
  std::size_t i = 0;
  for (; i + width <= n; i += width) {
    hn::Stream(hn::LoadU(tag, from + i), tag, out + i);
  }
  for (; i < n; ++i) {
    out[i] = from[i];
  }
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace vexel::kernels {

HWY_EXPORT(drawBits);
HWY_EXPORT(drawUniforms);
HWY_EXPORT(acceptNormals);
HWY_EXPORT(acceptExponentials);
HWY_EXPORT(copyPastCaches);

void drawBits(Lanes& lanes, std::uint64_t* out, std::size_t rounds) {
  HWY_DYNAMIC_DISPATCH(drawBits)(lanes, out, rounds);
}
void drawUniforms(Lanes& lanes, double* out, std::size_t rounds) {
  HWY_DYNAMIC_DISPATCH(drawUniforms)(lanes, out, rounds);
}
std::size_t acceptNormals(const std::uint64_t* bits, double* out, std::size_t n) {
  return HWY_DYNAMIC_DISPATCH(acceptNormals)(bits, out, n);
}
std::size_t acceptExponentials(const std::uint64_t* bits, double* out, std::size_t n) {
  return HWY_DYNAMIC_DISPATCH(acceptExponentials)(bits, out, n);
}

void copyPastCaches(const double* from, double* out, std::size_t n) {
  HWY_DYNAMIC_DISPATCH(copyPastCaches)(from, out, n);
}
void finishCopies() { hwy::FlushStream(); }

}  // namespace vexel::kernels

#endif  // HWY_ONCE

#else  // without the library

#include <bit>
#include <cstring>

namespace vexel::kernels {

namespace {

template <typename Out, typename Map>
void draw(Lanes& lanes, Out* out, std::size_t rounds, Map map) {
  for (std::size_t r = 0; r < rounds; ++r, out += laneCount) {
    for (std::size_t l = 0; l < laneCount; ++l) {
      const std::uint64_t a = lanes[0][l];
      const std::uint64_t b = lanes[1][l];
      const std::uint64_t c = lanes[2][l] ^ a;
      const std::uint64_t d = lanes[3][l] ^ b;
      out[l] = map(std::rotl(a + lanes[3][l], 23) + a);
      lanes[0][l] = a ^ d;
      lanes[1][l] = b ^ c;
      lanes[2][l] = c ^ b << 17;
      lanes[3][l] = std::rotl(d, 45);
    }
  }
}

}  // namespace

void drawBits(Lanes& lanes, std::uint64_t* out, std::size_t rounds) {
  draw(lanes, out, rounds, [](std::uint64_t bits) { return bits; });
}

void drawUniforms(Lanes& lanes, double* out, std::size_t rounds) {
  draw(lanes, out, rounds, unitInterval);
}

std::size_t acceptNormals(const std::uint64_t*, double*, std::size_t) { return 0; }
std::size_t acceptExponentials(const std::uint64_t*, double*, std::size_t) { return 0; }

void copyPastCaches(const double* from, double* out, std::size_t n) {
  std::memcpy(out, from, n * sizeof *out);
}
void finishCopies() {}

}  // namespace vexel::kernels

#endif
