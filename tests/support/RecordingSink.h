// A reporting sink that keeps every report, put on the module's reporting object for the life
// of a test fixture.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Reporting.h"

namespace TestSupport {

// Records every report; with throwAlways set it also throws, like a misbehaving custom sink.
class RecordingSink : public Reporting::ReportingObject::Notifications {
public:
    void Notify(Reporting::ReportingObject*, const std::wstring& text,
                Reporting::Level level) override {
        reports.emplace_back(text, level);
        if (throwAlways) throw std::runtime_error("sink failed");
    }

    std::vector<std::pair<std::wstring, Reporting::Level>> reports;
    bool throwAlways = false;
};

// Installs `sink` on the module's reporting object and puts the previous one back.
class ScopedReportingSink {
public:
    explicit ScopedReportingSink(Reporting::ReportingObject::Notifications* sink)
        : saved_(Reporting::GetModuleReportingObject().notifications) {
        Reporting::GetModuleReportingObject().notifications = sink;
    }
    ~ScopedReportingSink() { Reporting::GetModuleReportingObject().notifications = saved_; }
    ScopedReportingSink(const ScopedReportingSink&) = delete;
    ScopedReportingSink& operator=(const ScopedReportingSink&) = delete;

private:
    Reporting::ReportingObject::Notifications* saved_;
};

}  // namespace TestSupport
