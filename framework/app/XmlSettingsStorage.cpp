#include <framework/app/XmlSettingsStorage.h>

#include <framework/ksp/Log.h>
#include <framework/ksp/isOtherThanFile.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QSaveFile>
#include <QtCore/QTextStream>
#include <QtCore/QXmlStreamReader>

#include <cstdio>

namespace {

const QString rootName = QStringLiteral("settings");
constexpr qint64 largestFile = 16 * 1024 * 1024;
/// The document's destructor recurses, so that deep nesting alone could end the program.
constexpr int deepestElement = 64;

/// Why the bytes are no settings, or empty.
QString findFault(const QByteArray& bytes)
{
    QXmlStreamReader reader(bytes);
    for (int depth = 0; !reader.atEnd();) {
        switch (reader.readNext()) {
        case QXmlStreamReader::DTD:
            return QStringLiteral("a document type is not allowed");
        case QXmlStreamReader::StartElement:
            if (depth == 0 && reader.name() != rootName)
                return QStringLiteral("the root element is not <%1>").arg(rootName);
            if (++depth > deepestElement) return QStringLiteral("elements are nested too deep");
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        default:
            break;
        }
    }
    return reader.hasError()
               ? QStringLiteral("line %1: %2").arg(reader.lineNumber()).arg(reader.errorString())
               : QString();
}

/// Reads the file into the document; returns why it could not, or an empty text.
QString readDocument(const QString& path, QDomDocument& document)
{
    if (ksp::isOtherThanFile(path)) return ksp::otherThanFileReason();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return file.errorString();
    if (file.size() > largestFile) return QStringLiteral("the file is too large");
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) return file.errorString();
    QString fault = findFault(bytes);
    int line = 0;
    QString message;
    if (fault.isEmpty() && !document.setContent(bytes, &message, &line))
        fault = QStringLiteral("line %1: %2").arg(line).arg(message);
    return fault;
}

QDomDocument makeDocument()
{
    QDomDocument document;
    document.appendChild(document.createProcessingInstruction(
        QStringLiteral("xml"), QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")));
    document.appendChild(document.createElement(rootName));
    return document;
}

bool isElementName(const QString& key)
{
    static const QRegularExpression pattern(QStringLiteral("\\A[\\p{L}_][\\p{L}\\p{Nd}_.-]*\\z"));
    return pattern.match(key).hasMatch();
}

/// Writes the document to the file; returns why it could not, or an empty text.
QString writeDocument(const QString& path, const QDomDocument& document)
{
    if (ksp::isOtherThanFile(path)) return ksp::otherThanFileReason();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        QTextStream stream(&file);
        stream.setCodec("UTF-8");
        document.save(stream, 2, QDomNode::EncodingFromTextStream);
        stream.flush();
        if (stream.status() == QTextStream::Ok && file.commit()) return {};
    }
    return file.errorString();
}

/// Gives the file another name. A file of that name is replaced in the same step, or stays.
bool moveFile(const QString& from, const QString& to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

/// Writes the document in place of a file that is kept under another name. When that fails, the file is back
/// where it was.
QString replaceDamaged(const QString& path, const QDomDocument& document)
{
    const QString kept = path + QStringLiteral(".damaged");
    if (!moveFile(path, kept)) return QStringLiteral("the damaged file cannot be kept as %1").arg(kept);
    const QString reason = writeDocument(path, document);
    if (!reason.isEmpty() && !moveFile(kept, path))
        return QStringLiteral("%1; the damaged file is %2 now").arg(reason, kept);
    return reason;
}

} // namespace

XmlSettingsStorage::XmlSettingsStorage(const QString& path)
    : m_path(path)
    , m_document(makeDocument())
{
    if (path.isEmpty() || !QFileInfo::exists(path)) return;
    QDomDocument document;
    const QString fault = readDocument(path, document);
    if (fault.isEmpty()) {
        m_document = document;
        return;
    }
    m_damaged = true;
    ksp::Log::error(
        QStringLiteral("%1: settings cannot be read, the defaults are used: %2").arg(path, fault));
}

XmlSettingsStorage::~XmlSettingsStorage() = default;

QDomElement XmlSettingsStorage::getElement(const QString& key) const
{
    return m_document.documentElement().firstChildElement(key);
}

QDomElement XmlSettingsStorage::getCreateElement(const QString& key)
{
    QDomElement element = isElementName(key) ? getElement(key) : QDomElement();
    if (!element.isNull()) return element;
    if (!isElementName(key)) {
        ksp::Log::error(QStringLiteral("\"%1\" cannot be the key of a setting").arg(key));
        return {};
    }
    element = m_document.createElement(key);
    m_document.documentElement().appendChild(element);
    return element;
}

void XmlSettingsStorage::remove(const QString& key)
{
    const QDomElement element = getElement(key);
    if (!element.isNull()) m_document.documentElement().removeChild(element);
}

bool XmlSettingsStorage::save()
{
    if (m_path.isEmpty()) return true;
    const bool replaces = m_damaged && QFileInfo(m_path).isFile();
    const QString reason = replaces ? replaceDamaged(m_path, m_document) : writeDocument(m_path, m_document);
    if (reason.isEmpty()) {
        m_damaged = false;
        return true;
    }
    ksp::Log::error(QStringLiteral("%1: settings cannot be written: %2").arg(m_path, reason));
    return false;
}
