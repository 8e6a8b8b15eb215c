// Reading the tables of a shared object of the host.

#include "support/elf_file.h"

#include <elf.h>
#include <link.h>

#include <cstring>
#include <vector>

#include "gtest/gtest.h"
#include "support/text_file.h"

namespace kqsupt::tests {
namespace {

using Header = ElfW(Ehdr);
using Section = ElfW(Shdr);
using Symbol = ElfW(Sym);
using Dynamic = ElfW(Dyn);

template <class T>
std::vector<T> table(const std::string& image, const Section& section) {
  std::vector<T> entries(section.sh_size / sizeof(T));
  std::memcpy(entries.data(), image.data() + section.sh_offset, entries.size() * sizeof(T));
  return entries;
}

}  // namespace

ElfFile read_elf(const std::string& path) {
  ElfFile file;
  const std::string image = read_file(path);
  Header header{};
  if (image.size() < sizeof header) {
    ADD_FAILURE() << path << " is no shared object";
    return file;
  }
  std::memcpy(&header, image.data(), sizeof header);
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_shentsize != sizeof(Section)) {
    ADD_FAILURE() << path << " is no shared object of this host";
    return file;
  }
  std::vector<Section> sections(header.e_shnum);
  std::memcpy(sections.data(), image.data() + header.e_shoff, sections.size() * sizeof(Section));
  for (const Section& section : sections) {
    if (section.sh_type != SHT_DYNSYM && section.sh_type != SHT_DYNAMIC) {
      continue;
    }
    const char* names = image.data() + sections[section.sh_link].sh_offset;
    if (section.sh_type == SHT_DYNSYM) {
      for (const Symbol& symbol : table<Symbol>(image, section)) {
        if (symbol.st_shndx != SHN_UNDEF && ELF32_ST_BIND(symbol.st_info) != STB_LOCAL) {
          file.exported.insert(names + symbol.st_name);
        }
      }
    } else {
      for (const Dynamic& entry : table<Dynamic>(image, section)) {
        switch (entry.d_tag) {
          case DT_NEEDED:
            file.needed.insert(names + entry.d_un.d_val);
            break;
          case DT_SONAME:
            file.soname = names + entry.d_un.d_val;
            break;
          case DT_RUNPATH:
            file.runpath = names + entry.d_un.d_val;
            break;
          default:
            break;
        }
      }
    }
  }
  return file;
}

}  // namespace kqsupt::tests
