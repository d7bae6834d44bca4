// Mean and standard deviation of data that lie on several ranks, exact for every number of them.
//
//   mpicxx -std=c++20 mean.cpp -lvexel -o mean && mpirun -n 4 ./mean
#include <mpi.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <stdexcept>
#include <vector>
#include <vexel/distributions.hpp>
#include <vexel/random.hpp>
#include <vexel/states.hpp>

namespace {

// A state in transit: MPI wants elements of one size.
constexpr std::size_t kFrame = 16384;
using Frame = std::vector<std::uint8_t>;

Frame packed(const vexel::Moments& state) {
  const std::vector<std::uint8_t> bytes = state.to_bytes();
  const std::uint64_t size = bytes.size();
  Frame frame(kFrame);
  if (sizeof size + size > kFrame) {
    throw std::length_error("the state does not fit in a frame");
  }
  std::memcpy(frame.data(), &size, sizeof size);
  std::memcpy(frame.data() + sizeof size, bytes.data(), size);
  return frame;
}

vexel::Moments unpacked(const std::uint8_t* frame) {
  std::uint64_t size = 0;
  std::memcpy(&size, frame, sizeof size);
  return vexel::Moments::from_bytes(std::span(frame + sizeof size, size));
}

void merge(void* in, void* inout, int* count, MPI_Datatype*) {
  auto* from = static_cast<const std::uint8_t*>(in);
  auto* into = static_cast<std::uint8_t*>(inout);
  for (int i = 0; i < *count; ++i, from += kFrame, into += kFrame) {
    const Frame frame = packed(unpacked(into).merge(unpacked(from)));
    std::memcpy(into, frame.data(), kFrame);
  }
}

}  // namespace

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  int rank = 0;
  int size = 1;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &size);

  // Each rank has every size-th block of one long random array.
  const vexel::Normal law({.mean = 3, .sd = 2});
  vexel::Moments state(2);
  for (int block = rank; block < 16; block += size) {
    vexel::Random rng(1, static_cast<std::uint64_t>(block));
    state.update(law.sample(65536, rng));
  }

  MPI_Datatype frame{};
  MPI_Op op{};
  MPI_Type_contiguous(kFrame, MPI_BYTE, &frame);
  MPI_Type_commit(&frame);
  MPI_Op_create(&merge, 1, &op);
  const Frame mine = packed(state);
  Frame all(kFrame);
  MPI_Allreduce(mine.data(), all.data(), 1, frame, op, MPI_COMM_WORLD);
  if (rank == 0) {
    const vexel::Moments total = unpacked(all.data());
    std::printf("mean %a sd %a\n", total.mean(), total.std());
  }
  MPI_Op_free(&op);
  MPI_Type_free(&frame);
  MPI_Finalize();
}
