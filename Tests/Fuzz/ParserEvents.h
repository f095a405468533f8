#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "VQMSerialize/VQMXMLSerialize.h"

/// Receives the events of a document.
class EventListener {
public:
    EventListener() = default;
    virtual ~EventListener() = default;
    EventListener(const EventListener&) = delete;
    EventListener& operator=(const EventListener&) = delete;

    /// `attributes` holds names and values in turns, ended by a null name.
    virtual void Start(const char* name, const char** attributes) = 0;
    virtual void End(const char* name) = 0;
    virtual void Text(std::string_view piece) = 0;
};

enum class Verdict { WellFormed, Refused, Bomb };

/// The verdict and the events of the parser itself, without the product.
Verdict ParseWithExpat(std::string_view document, const std::vector<EventListener*>& listeners);

/// The most text that a document of `length` bytes may unfold to before it counts as a bomb.
std::size_t LargestText(std::size_t length);

/// The product's serializer. Entities count as bombs early, as in `ParseWithExpat`: at the
/// product's own threshold a target would spend its time in unfolding megabytes.
class EarlyBombSerializer : public CVQMXMLSerialize {
public:
    bool Create() override;

    /// Creates and parses.
    bool Read(std::string_view document, CVQMDataSerializableObject& target);
};

/// Passes the serializer's events on, and checks that each one comes with what belongs to it.
class ListeningTarget : public CVQMDataSerializableObject {
public:
    explicit ListeningTarget(EventListener& listener) : listener_(listener) {}

    void GetSturcture(void* /*pStructure*/) override {}
    void SetStructure(void* /*pStructure*/) override {}
    bool WriteTo(IVQMSerialize* /*pSerialize*/) override { return false; }
    bool ReadFrom(IVQMSerialize* pSerialize) override;

private:
    EventListener& listener_;
};

/// Distinguishes two runs of events without storing them.
class EventDigest : public EventListener {
public:
    void Start(const char* name, const char** attributes) override;
    void End(const char* name) override;
    void Text(std::string_view piece) override;

    std::size_t Value() const { return value_; }
    std::size_t TextSize() const { return textSize_; }

private:
    void Add(char kind, std::string_view text);

    std::size_t value_ = 0;
    std::size_t textSize_ = 0;
};
