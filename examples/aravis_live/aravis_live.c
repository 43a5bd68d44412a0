/* Converts the frames of a GigE Vision camera as they come: aravis_live [--camera NAME] [--format NAME]
   [--frames N]
   [--bmp FILE]. Aravis names pixel formats by their PFNC codes, which go to ConvImage as they are. */
#include <PrismoUtl.h>
#include <arv.h>
#include <stdio.h>
#include <stdlib.h>

enum { kBuffers = 8, kFrameTimeoutUs = 2000000, kBgra = 0, kMinPoolRows = 40 };

typedef struct {
  uint8_t* bgra;
  uint32_t width, height;
} Picture;

/* False when the frame cannot be converted. */
static bool Convert(ArvBuffer* buffer, Picture* picture) {
  const uint32_t format = arv_buffer_get_image_pixel_format(buffer);
  const uint32_t width = (uint32_t)arv_buffer_get_image_width(buffer);
  const uint32_t height = (uint32_t)arv_buffer_get_image_height(buffer);
  size_t size = 0;
  const void* frame = arv_buffer_get_image_data(buffer, &size);
  if (DataDepth(format) == 0 || size < (size_t)width * height * BitPerPixel(format) / 8) {
    fprintf(stderr, "no conversion of %zu bytes of format 0x%08x; choose another with --format\n", size,
            format);
    return false;
  }
  if (picture->width != width || picture->height != height) {
    *picture = (Picture){realloc(picture->bgra, (size_t)width * height * 4), width, height};
    if (picture->bgra == NULL) return false;
  }

  SetProcMode(height >= kMinPoolRows && height % 2 == 0); /* fewer or odd rows: the caller's thread */
  const uint32_t status = ConvImage(kBgra, format, 1, picture->bgra, frame, width, height);
  if (status == UTL_STS_SUCCESS) return true;
  TerminateMPThreads(); /* after a time-out the workers would still have the buffers */
  fprintf(stderr, "converting %ux%u of format 0x%08x failed with status 0x%x\n", width, height, format,
          status);
  return false;
}

/* Frames until `count` were converted (0: for ever); the last picture is left. */
static bool Show(ArvStream* stream, int count, Picture* picture) {
  gint64 second = g_get_monotonic_time();
  int done = 0, done_before = 0, lost = 0;
  while (count == 0 || done < count) {
    ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, kFrameTimeoutUs);
    if (buffer == NULL) {
      fprintf(stderr, "no frame within %d s; is the camera triggered, and the network free?\n",
              kFrameTimeoutUs / 1000000);
      return false;
    }
    const bool whole = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
    const bool converted = whole && Convert(buffer, picture);
    arv_stream_push_buffer(stream, buffer);
    if (whole && !converted) return false;
    done += whole;
    lost += !whole;

    const double seconds = (double)(g_get_monotonic_time() - second) / 1e6;
    if (seconds >= 1 || done == count) {
      printf("%ux%u: %.1f frames/s, %d converted, %d lost\n", picture->width, picture->height,
             (done - done_before) / seconds, done, lost);
      fflush(stdout);
      second = g_get_monotonic_time();
      done_before = done;
    }
  }
  return true;
}

static bool Run(ArvCamera* camera, const char* format, int count, Picture* picture, GError** error) {
  if (format) arv_camera_set_pixel_format_from_string(camera, format, error);
  const guint payload = *error ? 0 : arv_camera_get_payload(camera, error);
  ArvStream* stream = *error ? NULL : arv_camera_create_stream(camera, NULL, NULL, error);
  if (stream == NULL) return false;
  for (int i = 0; i < kBuffers; ++i) arv_stream_push_buffer(stream, arv_buffer_new(payload, NULL));

  bool shown = false;
  arv_camera_start_acquisition(camera, error);
  if (*error == NULL) {
    shown = Show(stream, count, picture);
    arv_camera_stop_acquisition(camera, NULL);
  }
  g_object_unref(stream);
  return shown;
}

int main(int argc, char** argv) {
  gchar *name = NULL, *format = NULL, *bmp = NULL;
  gint count = 0;
  const GOptionEntry options[] = {
      {"camera", 'c', 0, G_OPTION_ARG_STRING, &name, "Name or address (default: the first camera)", "NAME"},
      {"format", 'f', 0, G_OPTION_ARG_STRING, &format, "Pixel format, for example BayerRG8", "NAME"},
      {"frames", 'n', 0, G_OPTION_ARG_INT, &count, "Stop after this many (default: never)", "N"},
      {"bmp", 'b', 0, G_OPTION_ARG_FILENAME, &bmp, "Write the last picture", "FILE"},
      {NULL, 0, 0, 0, NULL, NULL, NULL}};
  GError* error = NULL;
  GOptionContext* context = g_option_context_new("- convert the frames of a GigE Vision camera");
  g_option_context_add_main_entries(context, options, NULL);
  g_option_context_parse(context, &argc, &argv, &error);
  g_option_context_free(context);

  Picture picture = {NULL, 0, 0};
  ArvCamera* camera = error ? NULL : arv_camera_new(name, &error);
  bool good = camera && Run(camera, format, count, &picture, &error);
  if (error) fprintf(stderr, "%s\n", error->message);
  if (good && bmp) {
    const uint32_t status = SaveBmpARGB(picture.bgra, picture.width, picture.height, bmp);
    good = status == UTL_STS_SUCCESS;
    if (!good) fprintf(stderr, "writing %s failed with status 0x%x\n", bmp, status);
  }
  g_clear_object(&camera);
  g_clear_error(&error);
  free(picture.bgra);
  g_free(name);
  g_free(format);
  g_free(bmp);
  return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
