// Our scene beside hand-written OpenGL: see docs/performance.md. Google Benchmark keeps and runs the list of
// workloads; what is timed, and how, is in PairedRuns.
#include <benchmarks/harness/Options.h>
#include <benchmarks/harness/ResultTable.h>
#include <benchmarks/harness/Work.h>
#include <benchmarks/works/childRuns.h>

#include <Viewer3dModule/Viewer3dModule.h>
#include <framework/app/Application.h>

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QSaveFile>
#include <QtGui/QSurfaceFormat>
#include <QtWidgets/QApplication>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <limits>
#include <stdexcept>

#include <malloc.h>

namespace {

/// What runs is told line by line as it ends; the library's own report says nothing of pairs.
class QuietReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>&) override {}
};

QString readDocument(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) throw std::runtime_error("cannot read " + path.toStdString());
    return QString::fromUtf8(file.readAll());
}

void writeDocument(const QString& path, const QString& text)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit())
        throw std::runtime_error("cannot write " + path.toStdString());
}

// What a workload frees stays with the process: else what the driver takes for each frame may come from the
// system anew each time, and frames of a few items cost four times as much, on both sides, or do not, as the
// heap happens to lie.
void keepHeap()
{
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_TOP_PAD, 64 << 20);
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
}

class Measurement
{
public:
    explicit Measurement(const Options& options)
        : m_options(options)
    {
        if (options.checks) m_recorded = ResultTable::figuresOf(readDocument(options.document));
        if (options.checks && m_recorded.empty())
            throw std::runtime_error(options.document.toStdString() + " has no table to compare with");
    }
    /// Returns the exit status.
    int run(char* program)
    {
        keepHeap();
        for (const Work& work : allWorks())
            registerWork(work);
        if (!m_isAnyRegistered) throw std::runtime_error("no benchmark has such a name");
        runRegistered(program);
        if (m_options.checks) tellOtherMachine();
        QStringList findings = ResultTable::findings(m_results, m_recorded);
        if (m_options.checks) {
            for (const QString& name : ResultTable::unrecorded(m_results, m_recorded))
                std::fprintf(stderr, "no record of %s\n", qPrintable(name));
            if (!ResultTable::isAnyCompared(m_results, m_recorded))
                findings << QStringLiteral("nothing was compared");
        }
        for (const QString& line : findings)
            std::fprintf(stderr, "%s\n", qPrintable(line));
        if (m_options.writes && !findings.empty()) std::fprintf(stderr, "nothing is recorded\n");
        if (m_options.writes && findings.empty()) writeTables();
        return findings.empty() ? 0 : 1;
    }

private:
    PairedRuns::Effort effort() const
    {
        PairedRuns::Effort effort =
            m_options.isQuick ? PairedRuns::Effort{1, 3, 9, 0.5} : PairedRuns::Effort{2, 15, 151, 4.0};
        effort.sides = m_options.sides;
        return effort;
    }

    void registerWork(const Work& work)
    {
        for (const qint64 size : m_options.isQuick ? work.fewSizes : work.sizes) {
            const QString name = QStringLiteral("%1/%2").arg(work.key).arg(size);
            if (!QRegularExpression(m_options.filter).match(name).hasMatch()) continue;
            m_isAnyRegistered = true;
            benchmark::RegisterBenchmark(qPrintable(name),
                                         [this, work, size](benchmark::State& state) {
                                             for (auto step : state) {
                                                 (void)step;
                                                 add(state, work, size);
                                             }
                                         })
                ->Iterations(1)
                ->UseManualTime();
        }
    }

    static void runRegistered(char* program)
    {
        int count = 1;
        benchmark::Initialize(&count, &program);
        QuietReporter reporter;
        benchmark::RunSpecifiedBenchmarks(&reporter);
    }

    // What is above the recorded figure is measured again, twice at most: other programs on the machine come
    // and go, what has become slower stays so.
    void add(benchmark::State& state, const Work& work, qint64 size)
    {
        for (int attempt = 0;; ++attempt) {
            std::vector<Result> results = measure(work, size);
            const bool isAbove = std::any_of(results.begin(), results.end(), [this](const Result& result) {
                return ResultTable::isAbove(result, m_recorded);
            });
            if (isAbove && attempt < 2) continue;
            for (Result& result : results) {
                std::printf("%s\n", qPrintable(ResultTable::line(result)));
                std::fflush(stdout);
                state.SetIterationTime(result.wall.ours * 1e-3);
                m_results.push_back(std::move(result));
            }
            return;
        }
    }

    std::vector<Result> measure(const Work& work, qint64 size) const
    {
        std::vector<Result> results;
        try {
            results = work.measure(size, effort());
        } catch (const std::exception& failure) {
            results.emplace_back().problem = QString::fromUtf8(failure.what());
        }
        for (Result& result : results) {
            if (result.key.isEmpty()) result.key = work.key;
            if (result.work.isEmpty()) result.work = work.title;
            if (result.goal <= 0.0) result.goal = work.goal;
            result.size = size;
            if (m_options.sides == PairedRuns::Both || result.pairs == 0) continue;
            result.problem.clear(); // there is one picture only
            result.remark = QStringLiteral("alone");
            if (result.kind == Result::Paired) result.unit = QStringLiteral("ms");
            if (result.kind == Result::Paired) result.kind = Result::Single;
        }
        return results;
    }

    void tellOtherMachine() const
    {
        const Machine here = Machine::here(m_options.commit);
        const QString document = readDocument(m_options.document);
        if (!document.contains(here.driver) || !document.contains(here.processor))
            std::fprintf(stderr, "the table was recorded elsewhere: here is %s on %s\n",
                         qPrintable(here.driver), qPrintable(here.processor));
    }

    void writeTables() const
    {
        const QString tables = ResultTable::toMarkdown(m_results, Machine::here(m_options.commit));
        const QString text = ResultTable::replaceTables(readDocument(m_options.document), tables);
        if (text.isNull())
            throw std::runtime_error(m_options.document.toStdString() + " lacks the marks of the tables");
        writeDocument(m_options.document, text);
    }

    Options m_options;
    ResultTable::Figures m_recorded;
    bool m_isAnyRegistered = false;
    std::vector<Result> m_results;
};

void setDefaultFormat()
{
    QSurfaceFormat format;
    format.setVersion(4, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    QSurfaceFormat::setDefaultFormat(format);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    try {
        QStringList arguments;
        for (int i = 1; i < argc; ++i)
            arguments << QString::fromLocal8Bit(argv[i]);
        options = Options::of(arguments);
    } catch (const std::invalid_argument& wrong) {
        std::fprintf(stderr, "viewer3d_benchmarks: %s\n", wrong.what());
        return 2;
    }
    setDefaultFormat();
    QApplication qtApplication(argc, argv);
    Application application;
    Viewer3dModule module;
    application.addExtension(&module);
    try {
        if (!options.child.isEmpty()) return runChild(options.child);
        return Measurement(options).run(argv[0]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "viewer3d_benchmarks: %s\n", failure.what());
        return 1;
    }
}
