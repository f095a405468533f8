#pragma once

#include "Tests/Fuzz/ParserEvents.h"
#include "Tests/Fuzz/TextOracle.h"

/// The meaning of any schedule document according to the format's description.
class ScheduleModel : public EventListener {
public:
    void Start(const char* name, const char** attributes) override;
    void End(const char* name) override;
    void Text(std::string_view piece) override;

    const _VQMPolicy& Policy() const { return policy_; }

private:
    enum class Child { None, Name, Size, Format };

    void StartItem(std::string_view attribute, std::string_view value);
    void StartProject(std::string_view attribute, std::string_view value);
    void StartNetwork(std::string_view attribute, std::string_view value);

    _VQMPolicy policy_;
    _VQMSchdule schedule_;
    _VQMContentInfo item_;
    Child child_ = Child::None;
};
