#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Exceptions.h"
#include "foundation/TextConversion.h"
#include "platform/Environment.h"
#include "storages/NamedValue.h"
#include "support/RecordingSink.h"

namespace {

using StorageSystem::NamedValue;
using StorageSystem::NamedValueRegistry;

std::optional<std::string> Published(const std::wstring& name) {
    return Platform::GetEnvironment(STLHelpers::WideToUtf8(NamedValue::VariableName(name)));
}

void Publish(const std::wstring& name, const std::string& value) {
    Platform::SetEnvironment(STLHelpers::WideToUtf8(NamedValue::VariableName(name)), value);
}

TEST(NamedValue, PublishesSharesAndRemoves) {
    const std::wstring variable = NamedValue::VariableName(L"test:Value");
    EXPECT_EQ(variable.rfind(std::to_wstring(::getpid()) + L"_", 0), 0u);
    EXPECT_EQ(variable.find_first_of(L"<>:\"/\\|?* "), std::wstring::npos);

    auto registry = std::make_unique<NamedValueRegistry>();
    auto first = std::make_unique<NamedValue>(L"sharedTest", 5, registry.get());
    const auto published = Published(L"sharedTest");
    ASSERT_TRUE(published.has_value());
    EXPECT_EQ(published->find_first_not_of("0123456789"), std::string::npos);
    EXPECT_EQ(first->Value()->Read(), 5);

    // Another holder (as another module would) finds the same record.
    {
        NamedValueRegistry otherModule;
        NamedValue second(L"sharedTest", 99, &otherModule);
        EXPECT_EQ(second.Value(), first->Value());
        second.Value()->Add(3);
        EXPECT_EQ(first->Value()->Read(), 8);
    }
    EXPECT_TRUE(Published(L"sharedTest").has_value());
    first.reset();
    EXPECT_TRUE(Published(L"sharedTest").has_value()) << "the creating module still holds it";
    registry.reset();
    EXPECT_FALSE(Published(L"sharedTest").has_value());

    // Text that is no address gives way to a new record's address.
    Publish(L"textTest", "abc");
    NamedValueRegistry textRegistry;
    NamedValue text(L"textTest", 4, &textRegistry);
    EXPECT_EQ(text.Value()->Read(), 4);
    EXPECT_EQ(Published(L"textTest").value_or("unset").find_first_not_of("0123456789"),
              std::string::npos);
}

// Records every report and still throws for the Error level, as the installed sink does.
struct RecordingThrowingSink : TestSupport::RecordingSink {
    void Notify(Reporting::ReportingObject* reporter, const std::wstring& text,
                Reporting::Level level) override {
        RecordingSink::Notify(reporter, text, level);
        Reporting::NotificationsDefault(true).Notify(reporter, text, level);
    }
};

TEST(NamedValue, RefusesMemoryThatHoldsNoRecord) {
    RecordingThrowingSink sink;
    const TestSupport::ScopedReportingSink installed(&sink);
    const std::vector<uint64_t> notARecord(16, 0);
    for (const std::string& address :
         {std::to_string(reinterpret_cast<std::uintptr_t>(notARecord.data())), std::string("8")}) {
        sink.reports.clear();
        Publish(L"bogusTest", address);
        NamedValueRegistry registry;
        EXPECT_THROW(NamedValue(L"bogusTest", 1, &registry), ErrorHandling::ErrorException);
        int guarded = 0;
        for (const auto& [text, level] : sink.reports)
            if (text.find(L"((_AddRef_Guarded(_pVal)))") != std::wstring::npos) ++guarded;
        EXPECT_EQ(guarded, 3) << address;
        ASSERT_FALSE(sink.reports.empty());
        EXPECT_NE(sink.reports.back().first.find(L"((m_pVal))"), std::wstring::npos);
        EXPECT_EQ(Published(L"bogusTest"), address) << "a foreign variable is left alone";
    }
    Platform::UnsetEnvironment(STLHelpers::WideToUtf8(NamedValue::VariableName(L"bogusTest")));
}

TEST(NamedValue, ValuesOfThisSystem) {
    ASSERT_NE(StorageSystem::DefaultCOMModel(), nullptr);
    EXPECT_EQ(StorageSystem::DefaultCOMModel()->Read(), 2);
    EXPECT_TRUE(Published(L"defaultCOMModel").has_value());
    ASSERT_NE(StorageSystem::XmlFileInstanceCount(), nullptr);  // made at the first call
    EXPECT_TRUE(Published(L"xmlFileInstanceCount").has_value());
}

}  // namespace
