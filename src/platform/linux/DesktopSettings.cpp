#include "platform/linux/DesktopSettings.h"

#include <gio/gio.h>

#include <memory>

#include "platform/linux/GObject.h"

namespace tidewell {
namespace {

struct VariantUnref {
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
struct SchemaUnref {
    void operator()(GSettingsSchema* schema) const { g_settings_schema_unref(schema); }
};

}  // namespace

std::optional<std::string> desktopSetting(const std::string& schema, const std::string& key)
{
    // Asking for what is not installed would end the process.
    GSettingsSchemaSource* const source = g_settings_schema_source_get_default();
    const std::unique_ptr<GSettingsSchema, SchemaUnref> found{
        source == nullptr ? nullptr : g_settings_schema_source_lookup(source, schema.c_str(), TRUE)};
    if (!found || g_settings_schema_get_path(found.get()) == nullptr ||
        g_settings_schema_has_key(found.get(), key.c_str()) == FALSE)
        return std::nullopt;
    const GObjectPtr<GSettings> settings{g_settings_new_full(found.get(), nullptr, nullptr)};
    const std::unique_ptr<GVariant, VariantUnref> value{g_settings_get_value(settings.get(), key.c_str())};
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN) != FALSE)
        return g_variant_get_boolean(value.get()) != FALSE ? "true" : "false";
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_INT32) != FALSE)
        return std::to_string(g_variant_get_int32(value.get()));
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING) != FALSE)
        return g_variant_get_string(value.get(), nullptr);
    return std::nullopt;
}

}  // namespace tidewell
