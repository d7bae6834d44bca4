// Walks the dynamic symbol table of a loaded object (System V ABI; the number of symbols follows
// from the hash table, classic or GNU).

#include "embedding/exported_symbols.hpp"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstdint>

namespace vexel {

namespace {

// The GNU table says only where chains start; the last chain's end is the last symbol.
std::size_t countFromGnuHash(const std::uint32_t* table) {
  const std::uint32_t buckets = table[0];
  const std::uint32_t firstHashed = table[1];
  const std::uint32_t bloomWords = table[2];
  const std::uint32_t* bucket = table + 4 + bloomWords * (sizeof(ElfW(Addr)) / 4);
  const std::uint32_t* chain = bucket + buckets;
  std::uint32_t last = 0;
  for (std::uint32_t i = 0; i < buckets; ++i) {
    last = std::max(last, bucket[i]);
  }
  if (last < firstHashed) {
    return firstHashed;
  }
  while ((chain[last - firstHashed] & 1U) == 0) {
    ++last;
  }
  return last + 1;
}

}  // namespace

std::vector<std::string> exportedFunctions(void* library) {
  link_map* map = nullptr;
  if (dlinfo(library, RTLD_DI_LINKMAP, &map) != 0) {
    return {};
  }
  const ElfW(Sym)* symbols = nullptr;
  const char* strings = nullptr;
  std::size_t count = 0;
  for (const ElfW(Dyn)* d = map->l_ld; d->d_tag != DT_NULL; ++d) {
    const auto* table = reinterpret_cast<const std::uint32_t*>(d->d_un.d_ptr);
    if (d->d_tag == DT_SYMTAB) {
      symbols = reinterpret_cast<const ElfW(Sym)*>(d->d_un.d_ptr);
    } else if (d->d_tag == DT_STRTAB) {
      strings = reinterpret_cast<const char*>(d->d_un.d_ptr);
    } else if (d->d_tag == DT_HASH) {
      count = table[1];
    } else if (d->d_tag == DT_GNU_HASH && count == 0) {
      count = countFromGnuHash(table);
    }
  }
  std::vector<std::string> names;
  for (std::size_t i = 0; symbols != nullptr && strings != nullptr && i < count; ++i) {
    const ElfW(Sym)& s = symbols[i];
    if (s.st_shndx != SHN_UNDEF && ELF64_ST_TYPE(s.st_info) == STT_FUNC) {
      names.emplace_back(strings + s.st_name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace vexel
