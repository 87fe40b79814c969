#include "platform/linux/DesktopSettings.h"

#include <gio/gio.h>

#include "platform/linux/GObject.h"

namespace tidewell {
namespace {

struct VariantUnref {
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
using VariantPtr = std::unique_ptr<GVariant, VariantUnref>;

struct SchemaUnref {
    void operator()(GSettingsSchema* schema) const { g_settings_schema_unref(schema); }
};
using SchemaPtr = std::unique_ptr<GSettingsSchema, SchemaUnref>;

/// Asking for what is not installed would end the process.
SchemaPtr findSchema(const char* name)
{
    GSettingsSchemaSource* const source = g_settings_schema_source_get_default();
    return SchemaPtr{source == nullptr ? nullptr : g_settings_schema_source_lookup(source, name, TRUE)};
}

}  // namespace

struct DesktopSettings::Impl {
    SchemaPtr schema;
    GObjectPtr<GSettings> settings;

    VariantPtr value(const char* key, const GVariantType* type) const
    {
        if (g_settings_schema_has_key(schema.get(), key) == FALSE)
            return nullptr;
        VariantPtr value{g_settings_get_value(settings.get(), key)};
        if (g_variant_is_of_type(value.get(), type) == FALSE)
            return nullptr;
        return value;
    }
};

DesktopSettings::DesktopSettings(const char* name)
{
    SchemaPtr schema = findSchema(name);
    if (!schema || g_settings_schema_get_path(schema.get()) == nullptr)
        return;
    // The store of settings holds the shared bus connection, and that would end the whole process when it
    // breaks, unless it is told not to.
    GErrorSlot error;
    if (const GObjectPtr<GDBusConnection> bus{g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, error.fill())})
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    GObjectPtr<GSettings> settings{g_settings_new_full(schema.get(), nullptr, nullptr)};
    impl_ = std::make_unique<Impl>(std::move(schema), std::move(settings));
}

DesktopSettings::~DesktopSettings() = default;

std::optional<bool> DesktopSettings::truth(const char* key) const
{
    const VariantPtr value = impl_ ? impl_->value(key, G_VARIANT_TYPE_BOOLEAN) : nullptr;
    return value ? std::optional{g_variant_get_boolean(value.get()) != FALSE} : std::nullopt;
}

std::optional<int> DesktopSettings::number(const char* key) const
{
    const VariantPtr value = impl_ ? impl_->value(key, G_VARIANT_TYPE_INT32) : nullptr;
    return value ? std::optional{static_cast<int>(g_variant_get_int32(value.get()))} : std::nullopt;
}

std::optional<std::string> DesktopSettings::text(const char* key) const
{
    const VariantPtr value = impl_ ? impl_->value(key, G_VARIANT_TYPE_STRING) : nullptr;
    return value ? std::optional<std::string>{g_variant_get_string(value.get(), nullptr)} : std::nullopt;
}

}  // namespace tidewell
