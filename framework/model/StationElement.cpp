#include <framework/model/StationElement.h>

StationElement::StationElement(CModelElement* owner)
    : CModelElement(owner)
{
}

StationElement::~StationElement() = default;

int StationElement::getType() const
{
    return Type;
}

void StationElement::setPose(const Pose& pose)
{
    m_pose = pose;
    notifyObservers();
}

glm::dvec3 StationElement::getCenter() const
{
    return -(glm::conjugate(m_pose.rotation) * m_pose.translation);
}

void StationElement::setCamera(const Camera& camera)
{
    m_camera = camera;
    notifyObservers();
}

void StationElement::setSourceId(const QString& id)
{
    m_sourceId = id;
    notifyObservers();
}

void StationElement::serialize(CQtArchive& archive)
{
    if (!archive.isLoading()) {
        serializeFields(archive);
        return;
    }
    StationElement loaded;
    loaded.serializeFields(archive);
    takeStored(loaded);
    m_sourceId = loaded.m_sourceId;
    m_pose = loaded.m_pose;
    m_camera = loaded.m_camera;
}

void StationElement::serializeFields(CQtArchive& archive)
{
    CModelElement::serialize(archive);
    archive.beginObject();
    archive.value(m_sourceId);
    glm::dquat& q = m_pose.rotation;
    for (double* number : {&q.w, &q.x, &q.y, &q.z})
        archive.value(*number);
    archive.block(&m_pose.translation, sizeof m_pose.translation);
    archive.value(m_camera.model);
    archive.value(m_camera.width);
    archive.value(m_camera.height);
    if (archive.isLoading())
        m_camera.parameters.resize(static_cast<int>(archive.readCount(sizeof(double))));
    else
        archive.writeUInt(static_cast<std::uint32_t>(m_camera.parameters.size()));
    for (double& parameter : m_camera.parameters)
        archive.value(parameter);
    archive.endObject(1);
    archive.finish();
}
