/* The C interface, called from C99 as a C host calls it: every function,
 * both callbacks, the log sink and the error returns.
 * Usage: TarvoC_test EMPTY_DIR   (the store is made there) */
#include <TarvoFramework/tarvo.h>
#include <math.h>
#include <stdio.h>
#include <string.h>

static int passed, failed;

#define CHECK(cond)                                                      \
  do {                                                                   \
    if (cond) {                                                          \
      ++passed;                                                          \
    } else {                                                             \
      ++failed;                                                          \
      fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #cond); \
    }                                                                    \
  } while (0)

/* A runway strip along latitude 47.0, about 760 m long and 45 m wide, and a
 * hold-short box north of it. */
#define RUNWAY "8.0,47.0 8.01,47.0 8.01,47.0004 8.0,47.0004"
#define HOLD "8.004,47.0006 8.005,47.0006 8.005,47.0009 8.004,47.0009"

typedef struct Heard {
  int occurred, removed, onRunway;
  char name[64], guid[64];
} Heard;

static void onOccurred(void* user, const char* name, const char* guid,
                       int onRunway) {
  Heard* h = (Heard*)user;
  ++h->occurred;
  h->onRunway = onRunway;
  snprintf(h->name, sizeof h->name, "%s", name ? name : "(null)");
  snprintf(h->guid, sizeof h->guid, "%s", guid ? guid : "(null)");
}

static void onRemoved(void* user, const char* name, const char* guid) {
  Heard* h = (Heard*)user;
  ++h->removed;
  snprintf(h->name, sizeof h->name, "%s", name ? name : "(null)");
  snprintf(h->guid, sizeof h->guid, "%s", guid ? guid : "(null)");
}

static int logLines;
static void onLog(void* user, const char* message) {
  (void)user;
  if (message && *message) ++logLines;
}

static void statusTexts(void) {
  static const struct {
    int status;
    const char* text;
  } kCases[] = {
      {TARVO_OK, "ok"},
      {TARVO_ABSENT, "absent"},
      {TARVO_GUID_STORED, "GUID already stored"},
      {TARVO_ERROR_NULL_ARGUMENT, "null argument"},
      {TARVO_ERROR_BUFFER_TOO_SMALL, "buffer too small"},
      {TARVO_ERROR_STORE, "store failure"},
      {TARVO_ERROR_INVALID_ARGUMENT, "invalid argument"},
      {TARVO_ERROR_NO_MEMORY, "out of memory"},
      {TARVO_ERROR_INTERNAL, "internal error"},
      {1234, "unknown status"},
  };
  size_t i;
  for (i = 0; i < sizeof kCases / sizeof kCases[0]; ++i) {
    CHECK(strcmp(tarvo_status_text(kCases[i].status), kCases[i].text) == 0);
  }
}

/* Every required pointer, passed as NULL, is refused without a crash. */
static void nullArguments(void) {
  char buf[8];
  tarvo_store_report report;
  const int results[] = {
      tarvo_last_error(buf, sizeof buf, NULL),
      tarvo_last_error(NULL, 4, &(size_t){0}),
      tarvo_documents_directory(buf, sizeof buf, NULL),
      tarvo_polygon_count(NULL),
      tarvo_add_polygons(NULL, "g", "n", 0),
      tarvo_add_polygons(RUNWAY, NULL, "n", 0),
      tarvo_add_polygons(RUNWAY, "g", NULL, 0),
      tarvo_remove_polygon(NULL),
      tarvo_store_text_problem(NULL, buf, sizeof buf, &(size_t){0}),
      tarvo_pending_count(NULL),
      tarvo_lookahead_point(TARVO_FAR_LEFT, NULL),
      tarvo_current_polygon_name(buf, sizeof buf, NULL),
      tarvo_current_polygon_guid(buf, sizeof buf, NULL),
      tarvo_last_polygon_name(buf, sizeof buf, NULL),
      tarvo_check_store(NULL, 0, NULL, buf, sizeof buf, &(size_t){0}),
      tarvo_check_store(NULL, 0, &report, buf, sizeof buf, NULL),
  };
  size_t i;
  for (i = 0; i < sizeof results / sizeof results[0]; ++i) {
    if (results[i] != TARVO_ERROR_NULL_ARGUMENT) {
      fprintf(stderr, "null argument case %zu gave %d\n", i, results[i]);
    }
    CHECK(results[i] == TARVO_ERROR_NULL_ARGUMENT);
  }
  CHECK(tarvo_check_store(NULL, -1, &report, buf, sizeof buf, &(size_t){0}) ==
        TARVO_ERROR_INVALID_ARGUMENT);
}

static void anglesAndVersion(void) {
  /* Values the angle header documents, not this build's output. */
  CHECK(DegreesToRadians(3.0) == 0.05235987755982988);
  CHECK(RadiansToDegrees(0.1) == 5.729577951308232);
  CHECK(isnan(DegreesToRadians(NAN)));
  CHECK(TarvoFrameworkVersionNumber == 1.0);
  CHECK(strncmp((const char*)TarvoFrameworkVersionString,
                "@(#)PROGRAM:TarvoFramework  PROJECT:TarvoFramework-1\n",
                54) == 0);
}

static void stringsAndStore(const char* dir) {
  char buf[512];
  size_t len = 99;
  tarvo_store_report report;

  CHECK(tarvo_set_documents_directory(dir) == TARVO_OK);
  CHECK(tarvo_documents_directory(buf, 3, &len) ==
        TARVO_ERROR_BUFFER_TOO_SMALL);
  CHECK(len == strlen(dir) && buf[0] == '\0');
  CHECK(tarvo_documents_directory(buf, len + 1, &len) == TARVO_OK);
  CHECK(strcmp(buf, dir) == 0);
  CHECK(tarvo_last_error(buf, sizeof buf, &len) == TARVO_OK && len == 0);

  /* Before the first use: no file yet, and that is trusted. */
  CHECK(tarvo_check_store(NULL, 0, &report, buf, sizeof buf, &len) == TARVO_OK);
  CHECK(report.state == TARVO_STORE_MISSING && report.trusted == 1);

  CHECK(tarvo_store_text_problem("RWY 09/27", buf, sizeof buf, &len) ==
        TARVO_ABSENT);
  CHECK(tarvo_store_text_problem("a\"b", buf, sizeof buf, &len) == TARVO_OK);
  CHECK(len > 0 && strlen(buf) == len);

  CHECK(tarvo_set_log_sink(onLog, NULL) == TARVO_OK);
  CHECK(tarvo_add_polygons(RUNWAY, "rwy", "RWY 09/27", 0) == TARVO_OK);
  CHECK(logLines > 0); /* the store logs its inserts */
  CHECK(tarvo_set_log_sink(NULL, NULL) == TARVO_OK);
  CHECK(tarvo_add_polygons(RUNWAY, "rwy", "RWY 09/27", 0) == TARVO_GUID_STORED);
  CHECK(tarvo_add_polygons(RUNWAY, "rwy", "RWY 09/27", 1) == TARVO_OK);
  CHECK(tarvo_add_polygons(HOLD, "hold", "RWY 09 HOLD SHORT", 0) == TARVO_OK);

  CHECK(tarvo_check_store(NULL, 0, &report, buf, sizeof buf, &len) == TARVO_OK);
  CHECK(report.state == TARVO_STORE_HEALTHY && report.trusted == 1);
  CHECK(report.area_count == 2 && report.vertex_count == 8 && len == 0);
}

static void monitoring(void) {
  Heard heard;
  char buf[64];
  size_t len = 0, count = 0;
  int hazard = -1, onRunway = -1;
  tarvo_coordinate at, left, middle, right;
  double speed = 0, heading = 0;

  memset(&heard, 0, sizeof heard);
  CHECK(tarvo_set_sound_enabled(0) == TARVO_OK);
  CHECK(tarvo_initializes() == TARVO_OK);
  CHECK(tarvo_polygon_count(&count) == TARVO_OK && count == 2);
  CHECK(tarvo_current_polygon_name(buf, sizeof buf, &len) == TARVO_ABSENT);
  CHECK(tarvo_set_delegate(onOccurred, onRemoved, &heard) == TARVO_OK);

  /* On the runway, rolling east at 36 km/h (10 m/s). */
  CHECK(tarvo_check_fix(47.0002, 8.005, 36.0, 90.0) == TARVO_OK);
  CHECK(heard.occurred == 1 && heard.removed == 0 && heard.onRunway == 1);
  CHECK(strcmp(heard.name, "RWY 09/27") == 0 && strcmp(heard.guid, "rwy") == 0);
  CHECK(tarvo_area_flags(&hazard, &onRunway) == TARVO_OK);
  CHECK(hazard == 1 && onRunway == 1);
  CHECK(tarvo_current_polygon_guid(buf, sizeof buf, &len) == TARVO_OK);
  CHECK(strcmp(buf, "rwy") == 0);
  CHECK(tarvo_last_polygon_name(buf, sizeof buf, &len) == TARVO_OK);
  CHECK(strcmp(buf, "RWY 09/27") == 0);
  CHECK(tarvo_current_fix(&at, &speed, &heading) == TARVO_OK);
  CHECK(at.latitude == 47.0002 && at.longitude == 8.005 && speed == 36.0 &&
        heading == 90.0);
  CHECK(tarvo_current_fix(NULL, NULL, NULL) == TARVO_OK);

  /* East-bound: 40 m ahead on the heading, the left point north of it. */
  CHECK(tarvo_lookahead_point(TARVO_FAR_LEFT, &left) == TARVO_OK);
  CHECK(tarvo_lookahead_point(TARVO_FAR_MIDDLE, &middle) == TARVO_OK);
  CHECK(tarvo_lookahead_point(TARVO_FAR_RIGHT, &right) == TARVO_OK);
  CHECK(fabs((middle.longitude - 8.005) * 111195.0 *
                 cos(47.0 * 3.141592653589793 / 180) -
             40.0) < 1.5);
  CHECK(left.latitude > middle.latitude && middle.latitude > right.latitude);
  CHECK(tarvo_lookahead_point(TARVO_MID_MIDDLE, &at) == TARVO_OK);
  CHECK(at.longitude > 8.005 && at.longitude < middle.longitude);
  CHECK(tarvo_lookahead_point(6, &at) == TARVO_ERROR_INVALID_ARGUMENT);
  CHECK(tarvo_lookahead_point(-1, &at) == TARVO_ERROR_INVALID_ARGUMENT);

  /* The entry queued the task that starts the sound. */
  CHECK(tarvo_pending_count(&count) == TARVO_OK && count == 1);
  CHECK(tarvo_run_pending(&count) == TARVO_OK && count == 1);
  CHECK(tarvo_run_pending(NULL) == TARVO_OK);

  /* Far from every area, standing still. */
  CHECK(tarvo_check_fix(47.01, 8.02, 0.0, 0.0) == TARVO_OK);
  CHECK(heard.occurred == 1 && heard.removed == 1);
  CHECK(strcmp(heard.name, "RWY 09/27") == 0 && strcmp(heard.guid, "rwy") == 0);
  CHECK(tarvo_current_polygon_name(buf, sizeof buf, &len) == TARVO_OK &&
        len == 0);
  CHECK(tarvo_area_flags(&hazard, NULL) == TARVO_OK && hazard == 0);

  /* Removing the delegate silences both callbacks. */
  CHECK(tarvo_set_delegate(NULL, NULL, NULL) == TARVO_OK);
  CHECK(tarvo_check_fix(47.0002, 8.005, 36.0, 90.0) == TARVO_OK);
  CHECK(heard.occurred == 1 && heard.removed == 1);
  CHECK(tarvo_run_pending(NULL) == TARVO_OK);
}

static void removals(const char* dir) {
  char path[600], buf[256];
  size_t count = 9, len = 0;
  tarvo_store_report report;
  FILE* junk;

  CHECK(tarvo_remove_polygon("rwy") == TARVO_OK);
  CHECK(tarvo_remove_polygon("never-stored") == TARVO_OK);
  CHECK(tarvo_get_polygons() == TARVO_OK);
  CHECK(tarvo_polygon_count(&count) == TARVO_OK && count == 1);
  CHECK(tarvo_remove_all_polygons() == TARVO_OK);
  CHECK(tarvo_get_polygons() == TARVO_OK);
  CHECK(tarvo_polygon_count(&count) == TARVO_OK && count == 0);

  /* A file that is no database cannot be trusted, and the text says why. */
  snprintf(path, sizeof path, "%s/not-a-database", dir);
  junk = fopen(path, "wb");
  CHECK(junk != NULL);
  if (!junk) return;
  fputs("this is not an SQLite database, just text long enough to look at",
        junk);
  fclose(junk);
  CHECK(tarvo_check_store(path, 0, &report, buf, 1, &len) ==
        TARVO_ERROR_BUFFER_TOO_SMALL);
  CHECK(report.trusted == 0 && len > 0);
  CHECK(tarvo_check_store(path, 0, &report, buf, sizeof buf, &len) == TARVO_OK);
  CHECK(report.state == TARVO_STORE_UNREADABLE ||
        report.state == TARVO_STORE_DAMAGED);
  CHECK(strlen(buf) == len);
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s EMPTY_DIR\n", argv[0]);
    return 2;
  }
  statusTexts();
  nullArguments();
  anglesAndVersion();
  stringsAndStore(argv[1]);
  monitoring();
  removals(argv[1]);
  printf("%d passed, %d failed\n", passed, failed);
  return failed == 0 ? 0 : 1;
}
