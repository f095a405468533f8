#pragma once

/// The settings store's key of the sync-demo setting.
constexpr char kSettingKey[] = "db/menu/syncdemo/state";
