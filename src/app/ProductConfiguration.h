// ProductConfiguration: everything the updater knows about the product it serves. Each
// value comes, in this order of precedence, from the command line, the registry (where the
// value has one) and the product string table compiled into the updater; a missing source
// gives an empty text, never an error. Getters never throw (std::bad_alloc aside).
//
// Command-line options are separate arguments compared without regard to case; an option
// that takes a value and stands last is ignored. The five string-table values (product
// name, company, executable, URL, bundle) are resolved once and then kept; everything else
// is computed afresh on each call.
//
// Thread safety: every getter from any thread; the value cache has its own lock.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

// The record of product texts handed to the application resources.
struct ProductInfo {
    std::wstring productName;          // "ProductName": the product name without spaces
    std::wstring fullProductName;      // "FullProductName"
    std::wstring productVersion;       // "ProductVersion"
    std::wstring shortProductVersion;  // "ShortProductVersion"
    std::wstring companyName;          // "CompanyName"
    // Further named parameters: "ComponentName", so that texts naming the component resolve
    // inside the resource library too (its own check counts an unresolved one as missing).
    std::vector<std::pair<std::wstring, std::wstring>> extraParameters;
};

// A value of the managed-update settings with where it came from ("command line /feedURL",
// "HKEY_CURRENT_USER\Software\...\UpdateFeedURL", ...; "" when it is unset).
struct ConfiguredValue {
    std::wstring value;
    std::wstring source;
};

class ProductConfiguration {
public:
    // String-table entries of the named values.
    static constexpr uint32_t kProductNameEntry = 129;
    static constexpr uint32_t kProductCompanyNameEntry = 130;
    static constexpr uint32_t kProductExecutableEntry = 131;
    static constexpr uint32_t kProductURLEntry = 132;
    static constexpr uint32_t kDownloadURLEntry = 134;
    static constexpr uint32_t kBundleNameEntry = 136;
    static constexpr uint32_t kPublicKeyEntry = 137;

    // From a whole Windows-style command line (program first), split by the
    // CommandLineToArgvW rules. Null or empty gives no arguments.
    explicit ProductConfiguration(const wchar_t* commandLine);
    // From an argument vector, the updater's own path first.
    explicit ProductConfiguration(std::vector<std::wstring> arguments);
    ProductConfiguration(const ProductConfiguration&) = delete;
    ProductConfiguration& operator=(const ProductConfiguration&) = delete;

    int32_t GetArgumentCount() const { return argumentCount; }
    const std::vector<std::wstring>& GetArguments() const { return arguments; }

    // The argument after the first one (from argument 1 on) equal to `name` that has a
    // following argument; "" when there is none.
    std::wstring GetOptionValue(const std::wstring& name) const;
    // Whether any argument from argument 1 on equals `name`.
    bool HasOption(const std::wstring& name) const;
    // The cached value, else option "/" + valueName, else string-table entry `entry`;
    // the first result is cached, empty or not.
    std::wstring GetNamedValue(const std::wstring& valueName, uint32_t entry);

    std::wstring GetProductName();
    std::wstring GetProductCompanyName();
    std::wstring GetProductExecutable();
    std::wstring GetBundleName();
    // With "/URLBrandSuffix/" replaced by the brand suffix.
    std::wstring GetProductURL();
    // "/componentName", else "Automatic Update".
    std::wstring GetComponentName() const;
    // "/languageName", else the culture name of the user-interface language.
    std::wstring GetConfiguredLanguageName() const;
    // False only when "/isSilent" is followed by "0".
    bool IsSilent() const;
    bool IsRunWithProduct() const;
    // "_01" for the registry's "SetupNameSuffix" "KAPRI", else "_" + that value.
    std::wstring GetBrandSuffix();
    // "/downloadURL", else the registry's "DownloadURL", else entry 134; brand token replaced.
    std::wstring GetDownloadURL();
    // The dotted "FileVersion" of the product executable beside the updater; "" without one.
    std::wstring GetProductVersion();
    // The first two pieces of the product version ("1.4.1.0" gives "1.4").
    std::wstring GetShortProductVersion();
    std::wstring GetProductNameWithoutSpaces();
    ProductInfo GetProductInfo();
    std::wstring GetUpdateMutexName();
    std::wstring GetExtrasMutexName();
    std::wstring GetExitEventName();
    // "InstallPath" of HKEY_LOCAL_MACHINE\Software\<product name>; "" without one.
    std::wstring GetInstallPath();
    // The minisign public key (base64 line) that must have signed the setup: "/publicKey",
    // else "UpdatePublicKey" of HKEY_LOCAL_MACHINE\Software\<product name>, else entry 137.
    // "" when none is configured: setups are then run unchecked.
    std::wstring GetPublicKey();

    // Managed updates. The update feed: "/feedURL", else "UpdateFeedURL" of the product's
    // key under HKEY_CURRENT_USER (where "DownloadURL" is read), else of
    // HKEY_LOCAL_MACHINE\Software\<product name>. Empty: no feed, the plain update flow.
    ConfiguredValue GetFeedURL();
    // The installed version: "/productVersion", else the version resource of the product
    // executable in "InstallPath" when that is set, else of the one beside the updater.
    ConfiguredValue GetInstalledVersion();
    // The release channel: "/channel", else "UpdateChannel" of the product's user key.
    ConfiguredValue GetUpdateChannel();
    // HKEY_CURRENT_USER\Software\<bundle>\<product>: the product's key of the user.
    std::wstring GetUserProductKeyPath();

    // Replaces {ProductName}, {ProductVersion}, {ShortProductVersion}, {ProductURL} and
    // {ComponentName}, in that order.
    std::wstring ExpandPlaceholders(const std::wstring& text);

    // Every "/URLBrandSuffix/" in `text` replaced by `suffix`, left to right.
    static std::wstring ReplaceBrandToken(const std::wstring& text, const std::wstring& suffix);
    static std::wstring ShortVersionOf(const std::wstring& version);

private:
    // The option's value, else the first of the keys' values `name` that is not empty.
    ConfiguredValue FromOptionOrRegistry(const std::wstring& option,
                                         const std::vector<std::wstring>& keys,
                                         const wchar_t* name);

    int32_t argumentCount = 0;
    std::vector<std::wstring> arguments;
    bool ownsArguments = true;
    std::map<std::wstring, std::wstring> valueCache;
    std::mutex cacheLock;
};

// The one configuration of the process, built from the process's own arguments (as they
// were when static objects were constructed). Any thread.
ProductConfiguration& GetProductConfiguration();
