#include "compliance/exported_symbols.h"

#include <elf.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace compliance {

namespace {

using FileHeader = ElfW(Ehdr);
using SectionHeader = ElfW(Shdr);
using Symbol = ElfW(Sym);

// The bytes of a file, read by offset.
class Image {
 public:
  explicit Image(const std::string& path) : path_(path) {
    const std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error(path + ": cannot be read");
    std::ostringstream bytes;
    bytes << file.rdbuf();
    bytes_ = std::move(bytes).str();
  }

  template <typename Record>
  Record at(size_t offset) const {
    if (offset > bytes_.size() || bytes_.size() - offset < sizeof(Record)) refuse();
    Record record;
    std::memcpy(&record, bytes_.data() + offset, sizeof record);
    return record;
  }

  std::string textAt(size_t offset) const {
    const size_t end = offset < bytes_.size() ? bytes_.find('\0', offset) : std::string::npos;
    if (end == std::string::npos) refuse();
    return bytes_.substr(offset, end - offset);
  }

  [[noreturn]] void refuse() const { throw std::runtime_error(path_ + ": no shared library of this machine's kind"); }

 private:
  std::string path_;
  std::string bytes_;
};

SectionHeader section(const Image& image, const FileHeader& header, size_t index) {
  return image.at<SectionHeader>(header.e_shoff + index * sizeof(SectionHeader));
}

bool isExported(const Symbol& symbol) {
  const unsigned visibility = ELF64_ST_VISIBILITY(symbol.st_other);
  // Absolute symbols are the names of versions.
  return symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS && ELF64_ST_BIND(symbol.st_info) != STB_LOCAL &&
         (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

}  // namespace

std::vector<std::string> exportedSymbols(const std::string& path) {
  const Image image(path);
  const auto header = image.at<FileHeader>(0);
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_type != ET_DYN) image.refuse();
  std::vector<std::string> names;
  for (size_t i = 0; i < header.e_shnum; ++i) {
    const SectionHeader table = section(image, header, i);
    if (table.sh_type != SHT_DYNSYM) continue;
    const SectionHeader texts = section(image, header, table.sh_link);
    for (size_t offset = 0; offset + sizeof(Symbol) <= table.sh_size; offset += sizeof(Symbol)) {
      const auto symbol = image.at<Symbol>(table.sh_offset + offset);
      if (isExported(symbol)) names.push_back(image.textAt(texts.sh_offset + symbol.st_name));
    }
  }
  return names;
}

}  // namespace compliance
