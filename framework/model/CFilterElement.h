#pragma once

#include <framework/model/CModelElement.h>
#include <framework/model/IElementFilter.h>

#include <functional>
#include <set>

/// A filter that is an element of the project: types that are switched off, single elements that are switched
/// off, and, not stored, a condition. Accepts everything at first. Setters notify the observers.
class HOSTFRAMEWORK_EXPORT CFilterElement : public CModelElement, public IElementFilter
{
public:
    /// The scene filter.
    static constexpr int Type = 0x36FF9100;

    explicit CFilterElement(CModelElement* owner = nullptr);
    ~CFilterElement() override;

    int getType() const override;

    bool isTypeAccepted(int type) const override;
    bool isAccepted(const CModelElement& element) const override;

    void setTypeAccepted(int type, bool accepted);
    void setElementAccepted(LONGID id, bool accepted);
    /// A further condition on elements; empty means none.
    void setCondition(std::function<bool(const CModelElement&)> condition);

    void serialize(CQtArchive& archive) override;

private:
    void serializeFields(CQtArchive& archive);

    std::set<int> m_rejectedTypes;
    std::set<LONGID> m_rejectedElements;
    std::function<bool(const CModelElement&)> m_condition;
};
