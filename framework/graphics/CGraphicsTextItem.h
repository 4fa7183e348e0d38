#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QRectF>
#include <QtCore/QString>
#include <QtGui/QBrush>

#include <memory>

class QPainter;
class QTextDocument;

/// Text of several lines, plain or with markup, that lays itself out and paints itself. Text that looks like
/// HTML is read as HTML. Lines break only where the text breaks them. Fonts are the application's where the
/// markup names none. Needs a QGuiApplication.
class HOSTFRAMEWORK_EXPORT CGraphicsTextItem
{
public:
    /// What the text is painted with where its markup does not say otherwise; black at first.
    class TextItem
    {
    public:
        const QBrush& brush() const { return m_brush; }
        void setBrush(const QBrush& brush) { m_brush = brush; }

    private:
        QBrush m_brush{Qt::black};
    };

    explicit CGraphicsTextItem(const QString& text);
    ~CGraphicsTextItem();
    CGraphicsTextItem(const CGraphicsTextItem&) = delete;
    CGraphicsTextItem& operator=(const CGraphicsTextItem&) = delete;

    /// The text's look; owned by the item.
    TextItem* getTextItem() { return &m_textItem; }
    const TextItem* getTextItem() const { return &m_textItem; }
    /// What the text takes, in units of the painter, y down.
    QRectF boundingRect() const;
    /// Paints what lies in the rectangle, in coordinates of boundingRect().
    void paint(QPainter* painter, const QRectF& exposedRect) const;

private:
    std::unique_ptr<QTextDocument> m_document;
    TextItem m_textItem;
};
