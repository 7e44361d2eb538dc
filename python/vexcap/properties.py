"""The numbered device properties of vexcap_set_dev_property / vexcap_get_dev_property, by
name, with names for their enumerated values."""

FACE_AUTH_MODE = 1
AUTO_EXPOSURE = 2
DIAGNOSTIC_LOG = 5
STREAM_TYPE = 9
STREAM_TYPE_APPLY = 16
RGB_STATUS = 17
RGB_OFF = 18
LLC = 19
XU_CONTROL_18 = 20
VIDEO_CONTROL_MODE = 21
HIRES_SENSOR_TYPE = 22

PROPERTY_IDS = {
    "face_auth_mode": FACE_AUTH_MODE,
    "auto_exposure": AUTO_EXPOSURE,
    "diagnostic_log": DIAGNOSTIC_LOG,
    "stream_type": STREAM_TYPE,
    "stream_type_apply": STREAM_TYPE_APPLY,
    "rgb_status": RGB_STATUS,
    "rgb_off": RGB_OFF,
    "llc": LLC,
    "xu_control_18": XU_CONTROL_18,
    "video_control_mode": VIDEO_CONTROL_MODE,
    "hires_sensor_type": HIRES_SENSOR_TYPE,
}

FACE_AUTH_MODES = {
    "disabled": 0x101,
    "alternative_illumination": 0x102,
    "background_subtraction": 0x104,
}

_ON_OFF = {
    AUTO_EXPOSURE: (0x201, 0x202),
    DIAGNOSTIC_LOG: (0x501, 0x500),
    LLC: (0x1301, 0x1302),
}

VALUE_NAMES = {
    FACE_AUTH_MODE: FACE_AUTH_MODES,
    XU_CONTROL_18: {"one": 0x1401, "two": 0x1402},
    **{pid: {"on": on, "off": off} for pid, (on, off) in _ON_OFF.items()},
}

# Format codes the high-resolution sensor type answers.
HIRES_FORMATS = {18: "1920 wide at 30 fps", 19: "1280x720 at 30 fps", 20: "3840 wide at 30 fps", 21: "none"}


def property_id(name_or_id):
    """The id of a property given by name ("rgb_status") or number (17)."""
    if isinstance(name_or_id, str):
        try:
            return PROPERTY_IDS[name_or_id]
        except KeyError:
            known = ", ".join(PROPERTY_IDS)
            raise ValueError(f"no device property is named {name_or_id!r}; known: {known}") from None
    return int(name_or_id)


def property_value(pid, value):
    """The number to send: names ("on", "background_subtraction") and booleans (for the on/off
    properties) are translated, numbers go as they are."""
    if isinstance(value, bool):
        if pid not in _ON_OFF:
            raise ValueError(f"device property {pid} is not an on/off setting")
        return _ON_OFF[pid][0 if value else 1]
    if isinstance(value, str):
        names = VALUE_NAMES.get(pid, {})
        try:
            return names[value]
        except KeyError:
            known = ", ".join(names) or "none (give a number)"
            raise ValueError(f"device property {pid} has no value named {value!r}; known: {known}") from None
    return int(value)
