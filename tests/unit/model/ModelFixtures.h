#pragma once

#include <framework/model/CModelElement.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CModelElementMngrExtension.h>
#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProject.h>

#include <functional>
#include <memory>
#include <vector>

/// An element of a given type with one number of its own.
template <int Type>
class NumberElement : public CModelElement
{
public:
    using CModelElement::CModelElement;
    NumberElement() = default;
    explicit NumberElement(int value)
        : number(value)
    {
    }
    int getType() const override { return Type; }
    void serialize(CQtArchive& archive) override
    {
        CModelElement::serialize(archive);
        archive.beginObject();
        archive.value(number);
        archive.endObject(1);
        archive.finish();
    }
    std::int32_t number = 0;
};

using PointElement = NumberElement<0x101>;
using LineElement = NumberElement<0x102>;
using LightElement = NumberElement<0x201>;
using CameraElement = NumberElement<0x202>;

/// Does what the test says when it is told.
class Observer : public IObserver
{
public:
    explicit Observer(std::function<void()> reaction = {})
        : m_reaction(std::move(reaction))
    {
    }
    void updateData(ISubject* subject) override
    {
        ++calls;
        lastSubject = subject;
        if (m_reaction) m_reaction();
    }
    int calls = 0;
    ISubject* lastSubject = nullptr;

private:
    std::function<void()> m_reaction;
};

/// Writes down the identifiers it is told of, "+1,2" and "-2", and then does what the test says.
class Extension : public CModelElementMngrExtension
{
public:
    int getType() const override { return type; }
    void afterAddItems(const std::vector<CModelElement*>& elements, ElementAddingContext& context) override
    {
        note('+', elements);
        context.progress.setPercentage(50.0);
        if (onAdded) onAdded(elements);
    }
    void afterRemoveItems(const std::vector<CModelElement*>& elements, ElementRemovingContext&) override
    {
        note('-', elements);
        if (onRemoved) onRemoved(elements);
    }

    int type = 1;
    std::vector<std::string> told;
    std::function<void(const std::vector<CModelElement*>&)> onAdded;
    std::function<void(const std::vector<CModelElement*>&)> onRemoved;

private:
    void note(char sign, const std::vector<CModelElement*>& elements)
    {
        std::string ids(1, sign);
        for (const CModelElement* element : elements)
            ids += (ids.size() > 1 ? "," : "") + std::to_string(element->getId());
        told.push_back(ids);
    }
};

template <typename Element>
std::vector<std::unique_ptr<CModelElement>> makeElements(int count)
{
    std::vector<std::unique_ptr<CModelElement>> elements;
    for (int i = 0; i < count; ++i)
        elements.push_back(std::make_unique<Element>());
    return elements;
}

inline std::vector<LONGID> idsOf(const std::vector<CModelElement*>& elements)
{
    std::vector<LONGID> ids;
    for (const CModelElement* element : elements)
        ids.push_back(element->getId());
    return ids;
}

template <typename Element>
void addSettings(CProject& project, int flags = CProject::StoredSettings)
{
    project.addProjectSettings(new COrdinaryItemCreator<Element>, flags);
}
