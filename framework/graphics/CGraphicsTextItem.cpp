#include <framework/graphics/CGraphicsTextItem.h>

#include <QtGui/QAbstractTextDocumentLayout>
#include <QtGui/QPainter>
#include <QtGui/QTextDocument>
#include <QtGui/QTextOption>

CGraphicsTextItem::CGraphicsTextItem(const QString& text)
    : m_document(std::make_unique<QTextDocument>())
{
    m_document->setUndoRedoEnabled(false);
    m_document->setDocumentMargin(0.0);
    QTextOption option = m_document->defaultTextOption();
    option.setWrapMode(QTextOption::NoWrap);
    m_document->setDefaultTextOption(option);
    if (Qt::mightBeRichText(text))
        m_document->setHtml(text);
    else
        m_document->setPlainText(text);
    // Lines that are centred or aligned to the right need to know the width of the longest one.
    m_document->setTextWidth(m_document->idealWidth());
}

CGraphicsTextItem::~CGraphicsTextItem() = default;

QRectF CGraphicsTextItem::boundingRect() const
{
    return QRectF(QPointF(0.0, 0.0), m_document->size());
}

void CGraphicsTextItem::paint(QPainter* painter, const QRectF& exposedRect) const
{
    if (!painter) return;
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setBrush(QPalette::Text, m_textItem.brush());
    context.clip = exposedRect;
    m_document->documentLayout()->draw(painter, context);
}
