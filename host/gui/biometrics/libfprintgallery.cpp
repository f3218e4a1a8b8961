#include "libfprintgallery.h"

#include "biometricslogging.h"
#include "fingerprintreader.h"

#undef signals
#include <fprint.h>
#define signals Q_SIGNALS

namespace {
constexpr char OwnerKey[] = "zr-owner-uid";
} // namespace

LibfprintGallery::LibfprintGallery(const zeral::TEMPLATES_HASH &templates, FpDevice *device)
    : m_prints(g_ptr_array_new_with_free_func(g_object_unref))
{
    for (auto it = templates.constBegin(); it != templates.constEnd(); ++it) {
        const zeral::TEMPLATE_DATA &stored = it.value();
        if (stored.format != FingerprintReader::LibfprintFormat)
            continue;
        GError *error = nullptr;
        FpPrint *print = fp_print_deserialize(
            reinterpret_cast<const guchar *>(stored.data.constData()), gsize(stored.data.size()),
            &error);
        if (!print) {
            qCWarning(lcBiometrics).nospace()
                << "skipped an unreadable fingerprint template of user " << it.key() << " ("
                << stored.data.size() << " bytes): " << (error ? error->message : "no reason given");
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
