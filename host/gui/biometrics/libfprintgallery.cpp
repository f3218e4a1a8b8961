#include "libfprintgallery.h"

#include "biometricslogging.h"
#include "fingerprintreader.h"

#undef signals
#include <fprint.h>
#define signals Q_SIGNALS

namespace {

constexpr char OwnerKey[] = "zr-owner-uid";

// libfprint 1.94 aborts the whole process (a GLib error, not a GError) when it deserializes
// a damaged print: a truncated blob reads as empty containers, and the library takes their
// first element. So the blob is checked here first, the way GLib itself can tell: the
// library's own header, then the print as a GVariant of the library's layout that must be in
// normal form (what GLib serializes always is; damaged bytes almost never are), and for the
// minutiae prints of image readers, the minutiae layout inside. What passes is handed to the
// library, which checks the rest and reports through a GError.
bool looksLikePrint(const QByteArray &blob, QString *why)
{
    static const char Header[] = "FP3";
    static const GVariantType *PrintType = G_VARIANT_TYPE("(issbymsmsia{sv}v)");
    constexpr int MinutiaePrint = 2; // FPI_PRINT_NBIS
    if (!blob.startsWith(Header)) {
        *why = QStringLiteral("not a libfprint print of this version");
        return false;
    }
    const QByteArray body = blob.mid(int(qstrlen(Header)));
    GVariant *print = g_variant_ref_sink(g_variant_new_from_data(
        PrintType, body.constData(), gsize(body.size()), FALSE, nullptr, nullptr));
    bool fine = g_variant_is_normal_form(print);
    if (!fine) {
        *why = QStringLiteral("damaged (not in normal form)");
    } else {
        GVariant *kind = g_variant_get_child_value(print, 0);
        GVariant *boxed = g_variant_get_child_value(print, 9);
        GVariant *data = g_variant_get_variant(boxed);
        if (g_variant_get_int32(kind) == MinutiaePrint
            && !g_variant_is_of_type(data, G_VARIANT_TYPE("(a(aiaiai))"))) {
            fine = false;
            *why = QStringLiteral("minutiae of an unknown layout %1")
                       .arg(QString::fromLatin1(g_variant_get_type_string(data)));
        }
        g_variant_unref(data);
        g_variant_unref(boxed);
        g_variant_unref(kind);
    }
    g_variant_unref(print);
    return fine;
}

} // namespace

LibfprintGallery::LibfprintGallery(const zeral::TEMPLATES_HASH &templates, FpDevice *device)
    : m_prints(g_ptr_array_new_with_free_func(g_object_unref))
{
    for (auto it = templates.constBegin(); it != templates.constEnd(); ++it) {
        const zeral::TEMPLATE_DATA &stored = it.value();
        if (stored.format != FingerprintReader::LibfprintFormat)
            continue;
        QString why;
        if (!looksLikePrint(stored.data, &why)) {
            qCWarning(lcBiometrics).nospace()
                << "skipped an unreadable fingerprint template of user " << it.key() << " ("
                << stored.data.size() << " bytes): " << why;
            continue;
        }
        GError *error = nullptr;
        FpPrint *print
            = fp_print_deserialize(reinterpret_cast<const guchar *>(stored.data.constData()),
                                   gsize(stored.data.size()), &error);
        if (!print) {
            qCWarning(lcBiometrics).nospace()
                << "skipped an unreadable fingerprint template of user " << it.key() << " ("
                << stored.data.size()
                << " bytes): " << (error ? error->message : "no reason given");
            g_clear_error(&error);
            continue;
        }
        if (device && !fp_print_compatible(print, device)) {
            qCInfo(lcBiometrics) << "skipped a template of user" << it.key() << "made by"
                                 << fp_print_get_driver(print) << "for another reader";
            g_object_unref(print);
            continue;
        }
        g_object_set_data(G_OBJECT(print), OwnerKey, GUINT_TO_POINTER(it.key()));
        g_ptr_array_add(m_prints, print);
    }
}

LibfprintGallery::~LibfprintGallery()
{
    g_ptr_array_unref(m_prints);
}

int LibfprintGallery::size() const
{
    return int(m_prints->len);
}

zeral::TYPE_ID LibfprintGallery::ownerOf(FpPrint *print)
{
    return print ? GPOINTER_TO_UINT(g_object_get_data(G_OBJECT(print), OwnerKey)) : 0;
}
