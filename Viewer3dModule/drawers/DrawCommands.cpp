#include <Viewer3dModule/drawers/DrawCommands.h>

#include <algorithm>

unsigned int DrawCommands::bufferOf(OpenGLFunctions& gl, std::vector<std::uint32_t>& words)
{
    auto list = std::find_if(m_lists.begin(), m_lists.end(), [&words](const List& known) {
        return known.buffer.name() != 0 && known.words == words;
    });
    if (list == m_lists.end()) {
        list = std::min_element(m_lists.begin(), m_lists.end(), [](const List& one, const List& other) {
            return one.lastUse < other.lastUse;
        });
        std::swap(list->words, words);
        list->buffer.upload(gl, list->words, GL_DYNAMIC_DRAW);
    }
    list->lastUse = ++m_uses;
    return list->buffer.name();
}
