#include "compliance/library/exported_symbols.h"

#include <gelf.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace compliance {

namespace {

class File {
 public:
  explicit File(const std::string& path)
      : path_(path), stream_(std::fopen(path.c_str(), "rbe"), std::fclose), elf_(nullptr, elf_end) {
    if (stream_ == nullptr) refuse(std::strerror(errno));
    elf_version(EV_CURRENT);
    elf_.reset(elf_begin(fileno(stream_.get()), ELF_C_READ, nullptr));
    GElf_Ehdr header;
    if (elf_ == nullptr || gelf_getehdr(elf_.get(), &header) == nullptr || header.e_type != ET_DYN)
      refuse("is no shared library");
  }

  Elf* elf() const { return elf_.get(); }

  [[noreturn]] void refuse(const std::string& why) const { throw std::runtime_error(path_ + ": " + why); }

 private:
  std::string path_;
  std::unique_ptr<FILE, int (*)(FILE*)> stream_;
  std::unique_ptr<Elf, int (*)(Elf*)> elf_;
};

bool isExported(const GElf_Sym& symbol) {
  const int visibility = GELF_ST_VISIBILITY(symbol.st_other);
  // Absolute symbols are the names of versions.
  return symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS && GELF_ST_BIND(symbol.st_info) != STB_LOCAL &&
         (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

void addNames(Elf* elf, Elf_Scn* section, size_t stringSection, std::vector<std::string>& names) {
  Elf_Data* const data = elf_getdata(section, nullptr);
  GElf_Sym symbol;
  for (int i = 0; gelf_getsym(data, i, &symbol) != nullptr; ++i) {
    const char* const name = elf_strptr(elf, stringSection, symbol.st_name);
    if (isExported(symbol) && name != nullptr) names.emplace_back(name);
  }
}

}  // namespace

void expectSharedLibrary(const std::string& path) { const File file(path); }

std::vector<std::string> exportedSymbols(const std::string& path) {
  const File file(path);
  std::vector<std::string> names;
  for (Elf_Scn* section = nullptr; (section = elf_nextscn(file.elf(), section)) != nullptr;) {
    GElf_Shdr header;
    if (gelf_getshdr(section, &header) != nullptr && header.sh_type == SHT_DYNSYM)
      addNames(file.elf(), section, header.sh_link, names);
  }
  if (names.empty()) file.refuse("exports nothing that can be read");
  return names;
}

}  // namespace compliance
