#pragma once

#include <tests/support/GlTest.h>
#include <tests/support/ProgramList.h>

#include <Viewer3dModule/shaders/Uniforms.h>

#include <QtCore/QTemporaryDir>
#include <QtGui/QOpenGLShaderProgram>

#include <memory>
#include <vector>

/// Evaluates a function of a shader for many cases, one case a pixel: the fragment stage reads the cases from
/// storage buffers and writes the results to one, and there is no picture.
class CaseDrawing : public GlTest
{
protected:
    /// Pixels in a row of cases.
    static constexpr int RowLength = 512;
    /// Binding of the buffer that the stage writes results to.
    static constexpr unsigned ResultBinding = 0;

    void SetUp() override;
    void TearDown() override;

    /// Builds and binds a program. The source is a fragment stage but for version line and main function: it
    /// has "void evaluate(int index)", which writes the result of case `index`. Include lines work. The
    /// Khronos compiler has to accept it too.
    void use(const QByteArray& source, const std::vector<std::string>& defines = {});

    /// Sets a uniform that the program must have.
    template <typename T>
    void set(const char* name, const T& value)
    {
        const int location = program->uniformLocation(name);
        EXPECT_GE(location, 0) << "no uniform " << name;
        uniforms::set(*gl, location, value);
    }

    /// Fills the storage buffer of a binding.
    template <typename T>
    void storage(unsigned binding, const std::vector<T>& values)
    {
        upload(binding, values.data(), values.size() * sizeof(T));
    }
    /// The value of an integer uniform that the program must have.
    int integerOf(const char* name);
    /// The binding of a storage block of the program, -1 when it has no such block.
    int blockBinding(const char* name);
    /// Evaluates the cases first to first + count - 1.
    void evaluate(int first, int count);
    /// The buffer of results, which storage() made.
    template <typename T>
    std::vector<T> results(std::size_t count)
    {
        std::vector<T> values(count);
        download(ResultBinding, values.data(), count * sizeof(T));
        return values;
    }
    /// Evaluates so many cases with a result of type T each.
    template <typename T>
    std::vector<T> evaluateAll(std::size_t count)
    {
        storage(ResultBinding, std::vector<T>(count));
        evaluate(0, static_cast<int>(count));
        return results<T>(count);
    }

    std::unique_ptr<QOpenGLShaderProgram> program;

private:
    void upload(unsigned binding, const void* bytes, std::size_t size);
    void download(unsigned binding, void* bytes, std::size_t size);
    QString write(const QString& name, const QByteArray& content);

    static constexpr unsigned Bindings = 8;
    QTemporaryDir m_folder;
    unsigned m_buffers[Bindings] = {};
    unsigned m_framebuffer = 0;
    int m_firstCase = -1;
    int m_caseEnd = -1;
};
