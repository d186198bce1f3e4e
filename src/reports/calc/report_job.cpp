// SPDX-License-Identifier: GPL-3.0-or-later
#include "reports/calc/report_job.h"

#include <dlfcn.h>

#include <uno/lbnames.h>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <com/sun/star/awt/XCallback.hpp>
#include <com/sun/star/document/MacroExecMode.hpp>
#include <com/sun/star/document/UpdateDocMode.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <com/sun/star/frame/XStorable.hpp>
#include <com/sun/star/lang/DisposedException.hpp>
#include <com/sun/star/lang/XSingleComponentFactory.hpp>
#include <com/sun/star/loader/XImplementationLoader.hpp>
#include <com/sun/star/task/XJob.hpp>
#include <com/sun/star/util/XCloseable.hpp>
#include <cppuhelper/factory.hxx>
#include <cppuhelper/implbase1.hxx>
#include <cppuhelper/implementationentry.hxx>
#include <exception>
#include <rtl/ref.hxx>
#include <utility>

#include "common/run_time_error.h"
#include "reports/calc/packed_workbook.h"

namespace davo::calc {

namespace {

using Component = Reference<sun::lang::XComponent>;
using Bytes = Sequence<sal_Int8>;

constexpr const char* kJobName = "davo.calc.ReportJob";

void Close(const Component& component) {
    try {
        const Reference<sun::util::XCloseable> closeable(component, sun::uno::UNO_QUERY);
        if (closeable.is()) closeable->close(true);
    } catch (const sun::uno::Exception&) {
        // A dead engine has closed it already.
    }
}

Component LoadTemplate(const Context& context, const QString& path) {
    const auto how = SequenceOf(
        {Property("Hidden", Any(true)), Property("AsTemplate", Any(true)),
         Property("MacroExecutionMode", Any(sun::document::MacroExecMode::NEVER_EXECUTE)),
         Property("UpdateDocMode", Any(sun::document::UpdateDocMode::NO_UPDATE))});
    return sun::frame::Desktop::create(context)->loadComponentFromURL(
        UrlOf(path), rtl::OUString("_blank"), 0, how);
}

// Hands the steps of the engine's process on to the program's.
class Steps : public cppu::WeakImplHelper1<sun::awt::XCallback> {
  public:
    explicit Steps(BeforeStep beforeStep) : beforeStep_(std::move(beforeStep)) {}

    void SAL_CALL notify(const Any& step) override {
        Sequence<sal_Int32> numbers;
        step >>= numbers;
        try {
            if (beforeStep_ && numbers.getLength() == 2) beforeStep_(numbers[0], numbers[1]);
        } catch (...) {
            // Only the engine's own exceptions find their way through its process.
            thrown_ = std::current_exception();
            throw sun::uno::RuntimeException();
        }
    }
    void Rethrow() const {
        if (thrown_) std::rethrow_exception(thrown_);
    }
    // A step that an engine had told when it was lost comes with the next call.
    void Forget() { beforeStep_ = nullptr; }

  private:
    BeforeStep beforeStep_;
    std::exception_ptr thrown_;
};

// The call as the engine's process sees it; its arguments are those of MakeReport.
class ReportJob : public cppu::WeakImplHelper1<sun::task::XJob> {
  public:
    explicit ReportJob(const Context& context) : context_(context) {}

    // Returns nothing, or the detail of a RunTimeError 440.
    Any SAL_CALL execute(const Sequence<sun::beans::NamedValue>& arguments) override {
        const auto argument = [&arguments](sal_Int32 index) {
            return index < arguments.getLength() ? arguments[index].Value : Any();
        };
        const auto text = [&argument](sal_Int32 index) {
            return FromUno(argument(index).get<rtl::OUString>());
        };
        const auto bytes = argument(0).get<Bytes>();
        const Reference<sun::awt::XCallback> steps(argument(3), UNO_QUERY_THROW);
        try {
            const auto* begin = reinterpret_cast<const char*>(bytes.getConstArray());
            const Workbook workbook =
                Unpacked({begin, static_cast<std::size_t>(bytes.getLength())});
            MakeReport(context_, workbook, text(1), text(2), [&steps](int n, int m) {
                steps->notify(Any(SequenceOf<sal_Int32>({n, m})));
            });
        } catch (const RunTimeError& error) {
            const std::string begin = RunTimeError(error.Number()).what();
            return Any(ToUno(
                QString::fromUtf8(error.what()).mid(static_cast<qsizetype>(begin.size()) + 2)));
        }
        return {};
    }

  private:
    Context context_;
};

Reference<sun::uno::XInterface> SAL_CALL MakeJob(const Context& context) {
    return *new ReportJob(context);
}

// The module that this function is in.
QString ModulePath() noexcept {
    Dl_info info{};
    return ::dladdr(reinterpret_cast<void*>(&MakeJob), &info) != 0
               ? QFile::decodeName(info.dli_fname)
               : QString();
}

// Which file a path is: another one when a newer version has been installed over it. Milliseconds
// and bytes.
using FileMark = std::pair<qint64, qint64>;
FileMark MarkOf(const QString& path) noexcept {
    const QFileInfo file(path);
    return {file.lastModified().toMSecsSinceEpoch(), file.size()};
}

// As this program has loaded it.
const FileMark kOwnModule = MarkOf(ModulePath());

// The engine must get the same module, since the workbook is packed for it. One with the checks of
// the sanitizers ends a program without them.
bool IsLoadable() {
#ifdef DAVO_SANITIZED
    return false;
#else
    return MarkOf(ModulePath()) == kOwnModule;
#endif
}

// Empty when the engine does not load the module.
Reference<sun::task::XJob> JobOf(const Context& context) {
    if (!IsLoadable()) return {};
    try {
        const auto services = context->getServiceManager();
        const Reference<sun::loader::XImplementationLoader> loader(
            services->createInstanceWithContext(rtl::OUString("com.sun.star.loader.SharedLibrary"),
                                                context),
            UNO_QUERY_THROW);
        const Reference<sun::lang::XSingleComponentFactory> factory(
            loader->activate(rtl::OUString::createFromAscii(kJobName), {}, UrlOf(ModulePath()), {}),
            UNO_QUERY_THROW);
        return {factory->createInstanceWithContext(context), UNO_QUERY_THROW};
    } catch (const sun::lang::DisposedException&) {
        throw;  // it has ended
    } catch (const sun::uno::Exception&) {
        return {};
    }
}

}  // namespace

void MakeReport(const Context& context, const Workbook& workbook, const QString& source,
                const QString& target, const BeforeStep& beforeStep) {
    const Component open = LoadTemplate(context, source);
    const auto close = qScopeGuard([&open] { Close(open); });
    const Document document(open, sun::uno::UNO_QUERY);
    if (!document.is()) {
        throw RunTimeError(ErrorNumber::Automation,
                           workbook.templateFile + " cannot be read as a workbook");
    }
    WorkbookWriter(context, workbook, document, beforeStep).Write();
    beforeStep(0, 0);
    const Reference<sun::frame::XStorable> storable(document, UNO_QUERY_THROW);
    const auto how = SequenceOf({Property("FilterName", Any(rtl::OUString("MS Excel 97"))),
                                 Property("Overwrite", Any(true))});
    storable->storeToURL(UrlOf(target), how);
}

bool MakeReportInEngine(const Context& context, const Workbook& workbook, const QString& source,
                        const QString& target, const BeforeStep& beforeStep) {
    const Reference<sun::task::XJob> job = JobOf(context);
    if (!job.is()) return false;
    const std::string bytes = Packed(workbook);
    const rtl::Reference<Steps> steps(new Steps(beforeStep));
    const auto forget = qScopeGuard([&steps] { steps->Forget(); });
    const auto named = [](const char* name, const Any& value) {
        return sun::beans::NamedValue(rtl::OUString::createFromAscii(name), value);
    };
    try {
        const Any detail = job->execute(
            SequenceOf({named("Workbook", Any(Bytes(reinterpret_cast<const sal_Int8*>(bytes.data()),
                                                    static_cast<sal_Int32>(bytes.size())))),
                        named("Source", Any(ToUno(source))), named("Target", Any(ToUno(target))),
                        named("Steps", Any(Reference<sun::awt::XCallback>(steps.get())))}));
        if (!detail.hasValue()) return true;
        throw RunTimeError(ErrorNumber::Automation,
                           FromUno(detail.get<rtl::OUString>()).toStdString());
    } catch (const sun::uno::Exception&) {
        steps->Rethrow();
        throw;
    }
}

}  // namespace davo::calc

// By these two the engine gets the job from this module.
extern "C" Q_DECL_EXPORT void component_getImplementationEnvironment(const char** name,
                                                                     void** /*environment*/) {
    *name = CPPU_CURRENT_LANGUAGE_BINDING_NAME;
}
extern "C" Q_DECL_EXPORT void* component_getFactory(const char* name, void* services, void* key) {
    using namespace davo::calc;
    static const cppu::ImplementationEntry entries[] = {
        {&MakeJob, [] { return rtl::OUString::createFromAscii(kJobName); },
         [] { return Sequence<rtl::OUString>(); }, &cppu::createSingleComponentFactory, nullptr, 0},
        {nullptr, nullptr, nullptr, nullptr, nullptr, 0}};
    return cppu::component_getFactoryHelper(name, services, key, entries);
}
