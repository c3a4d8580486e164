// Loads damaged resource files: fuzz_mutate COUNT [SEED]. Each is one item of the embedded
// catalogue, damaged in a way that the seed decides, in a set whose other files are whole. The file
// must load or be refused with a message, within two seconds, and the other groups must be as ever.
// Ends with 1 at the first file that is not so, and keeps it. Crashes and leaks are the sanitizers'
// to find.

#include <time.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <iterator>
#include <random>

#include "fuzz/CatalogueItems.h"
#include "fuzz/ResourceFile.h"

using namespace zavri::korvat;
using zavri::base::Logger;

namespace {

constexpr double kLongest = 2.0;            // seconds of processor time
constexpr std::size_t kLargestItem = 4000;  // bytes; items beyond that are left out
constexpr std::array<ResourceType, 4> kKinds{ResourceType::Enum, ResourceType::Nv, ResourceType::Cp,
                                             ResourceType::Fp};

// The same numbers everywhere, unlike the distributions of the standard library.
class Random {
 public:
  explicit Random(std::uint64_t seed) : _engine(seed) {}
  std::size_t below(std::size_t end) { return end == 0 ? 0 : _engine() % end; }
  template <typename List>
  const auto& choose(const List& list) {
    return list[below(std::size(list))];
  }

 private:
  std::mt19937_64 _engine;
};

struct Span {
  std::size_t begin;
  std::size_t size;
};

// The elements of a text that has no comments, in the order of their ends.
std::vector<Span> findElements(const std::string& text) {
  std::vector<Span> elements;
  std::vector<std::size_t> open;
  std::size_t at = text.find('<');
  while (at != std::string::npos) {
    const std::size_t end = text.find('>', at);
    if (end == std::string::npos) break;
    const bool isEnd = text[at + 1] == '/';
    if (!isEnd) open.push_back(at);
    if ((isEnd || text[end - 1] == '/') && !open.empty()) {
      elements.push_back({open.back(), end + 1 - open.back()});
      open.pop_back();
    }
    at = text.find('<', end);
  }
  return elements;
}

Span chooseElement(const std::string& text, Random& random) {
  const std::vector<Span> elements = findElements(text);
  return elements.empty() ? Span{0, text.size()} : random.choose(elements);
}

void flipBytes(std::string& text, Random& random) {
  const std::size_t count = 1 + random.below(8);
  for (std::size_t i = 0; i < count && !text.empty(); ++i) {
    text[random.below(text.size())] = static_cast<char>(random.below(256));
  }
}

void flipBit(std::string& text, Random& random) {
  if (text.empty()) return;
  char& byte = text[random.below(text.size())];
  byte = static_cast<char>(byte ^ (1 << random.below(8)));
}

void dropElement(std::string& text, Random& random) {
  const Span element = chooseElement(text, random);
  text.erase(element.begin, element.size);
}

void doubleElement(std::string& text, Random& random) {
  const Span element = chooseElement(text, random);
  text.insert(element.begin, text.substr(element.begin, element.size));
}

void moveElement(std::string& text, Random& random) {
  const Span element = chooseElement(text, random);
  const std::string moved = text.substr(element.begin, element.size);
  text.erase(element.begin, element.size);
  const Span other = chooseElement(text, random);
  text.insert(random.below(2) == 0 ? other.begin : other.begin + other.size, moved);
}

void nestDeep(std::string& text, Random& random) {
  static const std::vector<std::string> kNames = {"x", "member", "struct", "union", "items"};
  constexpr int kDepth = 10'000;
  const Span element = chooseElement(text, random);
  const std::string& name = random.choose(kNames);
  std::string front, back;
  for (int i = 0; i < kDepth; ++i) {
    front += "<" + name + ">";
    back += "</" + name + ">";
  }
  text.insert(element.begin + element.size, back);
  text.insert(element.begin, front);
}

// Replaces one number of the text.
void changeSize(std::string& text, Random& random) {
  static const std::vector<std::string> kNumbers = {
      "0",      "-1",         "65535",      "65536",       "65537",
      "255",    "256",        "2147483647", "-2147483648", "2147483648",
      "-32769", "4294967295", "4294967296", "1e308",       "99999999999999999999999999"};
  std::vector<Span> numbers;
  std::size_t at = text.find_first_of("0123456789");
  while (at != std::string::npos) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789", at), text.size());
    numbers.push_back({at, end - at});
    at = text.find_first_of("0123456789", end);
  }
  if (numbers.empty()) return;
  const Span& number = random.choose(numbers);
  text.replace(number.begin, number.size, random.choose(kNumbers));
}

void changeEncoding(std::string& text, Random& random) {
  static const std::vector<std::string> kEncodings = {"UTF-16", "ISO-8859-1",   "US-ASCII",
                                                      "UTF-7",  "windows-1252", ""};
  static const std::vector<std::string> kBroken = {
      "\xFF", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xC3", "\xEF\xBF\xBF"};
  switch (random.below(4)) {
    case 0:  // says it is what it is not
      text.insert(0, "<?xml version=\"1.0\" encoding=\"" + random.choose(kEncodings) + "\"?>");
      break;
    case 1:
      text.insert(random.below(text.size() + 1), random.choose(kBroken));
      break;
    default: {  // UTF-16, with and without its mark, in either order
      const bool isLittle = random.below(2) == 0;
      std::string wide = random.below(2) == 0 ? "" : isLittle ? "\xFF\xFE" : "\xFE\xFF";
      for (const char c : text) wide += isLittle ? std::string{c, '\0'} : std::string{'\0', c};
      text = wide;
    }
  }
}

// At a multiple of 64 bytes; over a run, at each of them.
void cut(std::string& text, Random& random) {
  text.resize(64 * random.below(text.size() / 64 + 1));
}

void addEntities(std::string& text, Random& random) {
  static const std::vector<std::string> kTypes = {
      "<!DOCTYPE ldrf [<!ENTITY a \"aaaaaaaaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
      "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;\">]>",
      "<!DOCTYPE ldrf [<!ENTITY a SYSTEM \"file:///etc/hostname\">]>",
      "<!DOCTYPE ldrf [<!ENTITY % a \"<!ENTITY d 'x'>\"> %a;]>",
      "<!DOCTYPE ldrf SYSTEM \"none.dtd\">", ""};
  const Span element = chooseElement(text, random);
  text.insert(std::min(text.find('>', element.begin), text.size() - 1) + 1, "&d;&a;");
  text.insert(0, random.choose(kTypes));
}

void addLongText(std::string& text, Random& random) {
  constexpr std::size_t kSize = 100'000;
  static const std::vector<std::string> kTexts = {std::string(kSize, 'a'), std::string(kSize, '9'),
                                                  std::string(kSize, '('), std::string(kSize, ' ')};
  const Span element = chooseElement(text, random);
  const std::size_t end = std::min(text.find('>', element.begin), text.size() - 1);
  if (random.below(2) == 0) {
    text.insert(end + 1, random.choose(kTexts));
  } else {
    text.insert(end, " id='" + random.choose(kTexts) + "'");
  }
}

// One element's text in the place of another one's.
void swapTexts(std::string& text, Random& random) {
  const Span from = chooseElement(text, random);
  const std::string inner = text.substr(from.begin, from.size);
  const Span to = chooseElement(text, random);
  text.replace(to.begin, to.size, inner);
}

struct Damage {
  const char* name;
  void (*inflict)(std::string& text, Random& random);
  unsigned weight;  // of 100 files
};
constexpr Damage kDamages[] = {
    {"flipped bytes", flipBytes, 16},
    {"flipped bit", flipBit, 12},
    {"dropped element", dropElement, 10},
    {"doubled element", doubleElement, 10},
    {"moved element", moveElement, 10},
    {"nested 10,000 deep", nestDeep, 2},
    {"changed size", changeSize, 14},
    {"wrong encoding", changeEncoding, 6},
    {"cut", cut, 8},
    {"entities", addEntities, 4},
    {"long text", addLongText, 2},
    {"swapped texts", swapTexts, 6},
};

std::size_t chooseDamage(Random& random) {
  std::size_t number = random.below(100);
  for (std::size_t i = 0; i < std::size(kDamages); ++i) {
    if (number < kDamages[i].weight) return i;
    number -= kDamages[i].weight;
  }
  return 0;
}

double processorSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

class Campaign {
 public:
  explicit Campaign(std::uint64_t seed) : _random(seed) {
    Logger::setSink([this](Logger::Level level, const std::string&) {
      if (level <= Logger::Warning) ++_messageCount;
    });
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
      for (std::string& item : fuzz::splitCatalogue(kKinds[i])) {
        if (item.size() <= kLargestItem) _items[i].push_back(std::move(item));
      }
      writeWhole(i);
    }
    TypeManager manager = makeManager();
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
      const ResourceGroup* const group = load(manager, i);
      if (group == nullptr) throw std::runtime_error("an item of the catalogue does not load");
      _typeCounts[i] = group->getTypesByName().size();
    }
  }
  Campaign(const Campaign&) = delete;
  Campaign& operator=(const Campaign&) = delete;
  ~Campaign() { Logger::setSink({}); }

  // False for a finding.
  bool tryFile() {
    const std::size_t kind = _random.below(kKinds.size());
    std::string text = _random.choose(_items[kind]);
    const std::size_t damage = chooseDamage(_random);
    kDamages[damage].inflict(text, _random);
    if (!text.empty() && _random.below(4) == 0) {
      kDamages[chooseDamage(_random)].inflict(text, _random);
    }

    _folder.write(kKinds[kind], text.data(), text.size());
    const double start = processorSeconds();
    const char* const problem = findProblem(kind);
    const double seconds = processorSeconds() - start;
    writeWhole(kind);
    if (seconds > _slowest) {
      _slowest = seconds;
      _slowestDamage = kDamages[damage].name;
    }
    const bool isGood = problem == nullptr && seconds <= kLongest;
    if (!isGood) {
      keep(text);
      std::fprintf(stderr, "fuzz_mutate: %s, %s: %s; the file is kept as mutated.xml\n",
                   ResourceFileSet::getFileName(kKinds[kind]), kDamages[damage].name,
                   problem == nullptr ? "took too long" : problem);
    }
    return isGood;
  }

  void printSummary(unsigned long count, double seconds) const {
    std::printf(
        "%lu files in %.0f s, %.0f a second: %lu loaded, %lu refused; slowest %.3f s of processor "
        "time (%s)\n",
        count, seconds, static_cast<double>(count) / seconds, _loadedCount, count - _loadedCount,
        _slowest, _slowestDamage);
  }

 private:
  TypeManager makeManager() const {
    TypeManager manager("drv");
    manager.setBaseDir(_folder.getBaseDir());
    return manager;
  }

  const ResourceGroup* load(TypeManager& manager, std::size_t kind) const {
    return manager.getResourceFileSet(TypeId::StdPrefix).getGroup(kKinds[kind], true, &manager);
  }

  void writeWhole(std::size_t kind) {
    const std::string& text = _items[kind].front();
    _folder.write(kKinds[kind], text.data(), text.size());
  }

  // Null when all is well.
  const char* findProblem(std::size_t kind) {
    TypeManager manager = makeManager();
    _messageCount = 0;
    const ResourceGroup* const group = load(manager, kind);
    if (group == nullptr && _messageCount == 0) return "refused without a message";
    if (group != nullptr) {
      ++_loadedCount;
      fuzz::useGroup(manager, *group);
    }
    for (std::size_t other = 0; other < kKinds.size(); ++other) {
      if (other == kind) continue;
      const ResourceGroup* const whole = load(manager, other);
      if (whole == nullptr) return "another group does not load";
      if (whole->getTypesByName().size() != _typeCounts[other]) return "another group has changed";
      fuzz::useGroup(manager, *whole);
    }
    return nullptr;
  }

  static void keep(const std::string& text) {
    std::ofstream file("mutated.xml", std::ios::binary);
    file << text;
  }

  fuzz::ResourceFolder _folder;
  Random _random;
  std::array<std::vector<std::string>, kKinds.size()> _items;
  std::array<std::size_t, kKinds.size()> _typeCounts{};
  unsigned long _messageCount = 0;
  unsigned long _loadedCount = 0;
  double _slowest = 0;
  const char* _slowestDamage = "none";
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fputs("usage: fuzz_mutate COUNT [SEED]\n", stderr);
    return 2;
  }
  try {
    const unsigned long count = std::stoul(argv[1]);
    const std::uint64_t seed = argc == 3 ? std::stoull(argv[2]) : 1;
    timespec start{}, end{};
    clock_gettime(CLOCK_MONOTONIC, &start);
    Campaign campaign(seed);
    for (unsigned long i = 0; i < count; ++i) {
      if (!campaign.tryFile()) {
        std::fprintf(stderr, "fuzz_mutate: file %lu of seed %llu\n", i + 1,
                     static_cast<unsigned long long>(seed));
        return 1;
      }
    }
    clock_gettime(CLOCK_MONOTONIC, &end);
    campaign.printSummary(count, static_cast<double>(end.tv_sec - start.tv_sec) +
                                     1e-9 * static_cast<double>(end.tv_nsec - start.tv_nsec));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fuzz_mutate: %s\n", error.what());
    return 2;
  }
  return 0;
}
