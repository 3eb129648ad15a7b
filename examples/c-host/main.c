/* A host app in plain C: registers a runway, hands the monitor a short taxi
 * track across it, prints the notices it hears and checks the store first.
 *
 * Usage: tarvo-example-c-host [DATA_DIR]   (the areas are stored there) */
#include <TarvoFramework/tarvo.h>
#include <stdio.h>

static void occurred(void* user, const char* name, const char* guid,
                     int onRunway) {
  int* warnings = (int*)user;
  ++*warnings;
  printf("  warning: %s (%s)%s\n", name ? name : "?", guid ? guid : "?",
         onRunway ? ", on it" : ", ahead");
}

static void removed(void* user, const char* name, const char* guid) {
  (void)user;
  (void)guid;
  printf("  clear%s%s\n", name && *name ? " of " : "", name ? name : "");
}

static int fail(const char* what, int status) {
  fprintf(stderr, "tarvo-example-c-host: %s: %s\n", what,
          tarvo_status_text(status));
  return 1;
}

int main(int argc, char** argv) {
  char problems[1024];
  size_t length = 0;
  tarvo_store_report report;
  int warnings = 0, recovered = 0, status, i;

  printf("TarvoFramework %.1f (C)\n", TarvoFrameworkVersionNumber);
  if (argc > 1 && (status = tarvo_set_documents_directory(argv[1])) != TARVO_OK)
    return fail("documents directory", status);

  /* At start-up, a write that a crash interrupted is rolled back first. */
  status = tarvo_recover_store(NULL, 2000, &recovered, &report, problems,
                               sizeof problems, &length);
  if (status != TARVO_OK && status != TARVO_ERROR_BUFFER_TOO_SMALL)
    return fail("store check", status);
  if (recovered)
    printf("The last change of the runway database was interrupted; undone\n");
  if (!report.trusted) {
    fprintf(stderr, "The runway database cannot be trusted:\n%s\n", problems);
    return 1;
  }

  tarvo_set_sound_enabled(0); /* this example prints; it plays nothing */
  tarvo_set_delegate(occurred, removed, &warnings);
  status = tarvo_add_polygons(
      "-93.2300,44.8800 -93.1920,44.8800 -93.1920,44.8804 -93.2300,44.8804",
      "example-rwy", "RWY 09/27", 1);
  if (status != TARVO_OK) return fail("registering the runway", status);
  if ((status = tarvo_initializes()) != TARVO_OK)
    return fail("initializing", status);

  /* Northbound across the runway at 20 km/h, one fix every 2 s. */
  for (i = 0; i < 8; ++i) {
    double latitude = 44.8797 + i * 0.0001;
    printf("fix %.4f, -93.2100\n", latitude);
    tarvo_check_fix(latitude, -93.2100, 20.0, 0.0);
    tarvo_run_pending(NULL); /* the sound tasks, on this same thread */
  }
  tarvo_set_delegate(NULL, NULL, NULL);
  return warnings > 0 ? 0 : 1;
}
