// Text look-ups through the resource manager: a cached text (one pass over the storages and
// one cache hit), and the first look-up after the caches were emptied (an XPath query over
// the loaded Resources.xml files and placeholder expansion).
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <boost/make_shared.hpp>

#include "resourcelib/ResourceManagerFactory.h"

namespace {

constexpr int kTexts = 500;

// A resources folder with two languages; the texts live in the language file, their
// placeholder in Common.
std::filesystem::path MakeFolder() {
    const auto folder = std::filesystem::temp_directory_path() / "lumetta-resource-bench";
    std::filesystem::create_directories(folder / "en");
    std::filesystem::create_directories(folder / "Common");
    std::ofstream(folder / "Metadata.xml")
        << "<ResourceLib><Languages><Language name=\"en\" title=\"English\" locale=\"1033\" "
           "default=\"1\"/><Language name=\"de\" title=\"Deutsch\" locale=\"1031\"/>"
           "</Languages></ResourceLib>";
    std::ofstream texts(folder / "en" / "Resources.xml");
    texts << "<ResourceLib><Resources>";
    for (int i = 0; i < kTexts; ++i)
        texts << "<String name=\"Text" << i << "\" value=\"Text number " << i
              << " of {Product}\"/>";
    texts << "</Resources></ResourceLib>";
    std::ofstream(folder / "Common" / "Resources.xml")
        << "<ResourceLib><Resources><String name=\"Product\" value=\"Lumetta\"/>"
           "</Resources></ResourceLib>";
    return folder;
}

void CachedText(benchmark::State& state) {
    const std::wstring folder = MakeFolder().wstring();
    auto manager = ResourceLib::CreateResourceManager(folder.c_str(), -1);
    const ResourceLib::ResourceName name(L"Text250");
    manager->GetString(name);
    for (auto _ : state) benchmark::DoNotOptimize(manager->GetString(name));
}
BENCHMARK(CachedText);

void FirstLookUpAfterClearCache(benchmark::State& state) {
    const std::wstring folder = MakeFolder().wstring();
    auto manager = ResourceLib::CreateResourceManager(folder.c_str(), -1);
    const ResourceLib::ResourceName name(L"Text499");
    manager->GetString(name);
    for (auto _ : state) {
        manager->ClearCache();
        benchmark::DoNotOptimize(manager->GetString(name));
    }
}
BENCHMARK(FirstLookUpAfterClearCache);

}  // namespace
