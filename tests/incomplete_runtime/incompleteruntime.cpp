// A library that exports every function of the NDI runtime but NDIlib_recv_capture_v2. Nothing calls
// them: it must be turned down before.

#if defined(_WIN32)
#define EXPORTED extern "C" __declspec(dllexport)
#else
#define EXPORTED extern "C" __attribute__((visibility("default")))
#endif

#define NEVER_CALLED(name)                                                                                             \
    EXPORTED void name();                                                                                              \
    void name() {}

NEVER_CALLED(NDIlib_initialize)
NEVER_CALLED(NDIlib_destroy)
NEVER_CALLED(NDIlib_find_create_v2)
NEVER_CALLED(NDIlib_find_wait_for_sources)
NEVER_CALLED(NDIlib_find_get_current_sources)
NEVER_CALLED(NDIlib_find_destroy)
NEVER_CALLED(NDIlib_recv_create_v3)
NEVER_CALLED(NDIlib_recv_free_video_v2)
NEVER_CALLED(NDIlib_recv_free_audio_v2)
NEVER_CALLED(NDIlib_recv_destroy)
