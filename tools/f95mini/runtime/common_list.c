/* The run-time COMMON list of a DLL joins the program's. The debugger asks the program for
   one list ("__get_common_info"), but every image built by f95mini lays out its own list at
   link time; a DLL's blocks would stay unknown to the debugger without this. The program
   exports its list head; a DLL appends its nodes when it is loaded and takes them out when
   it is unloaded. A program that does not export the head (a C program) leaves each DLL
   with its own list, which the debugger then finds through the DLL's routine. */
#include <windows.h>

#include "f95rt.h"

struct common_node {
  struct common_node* next;
  const char* name;
  void* storage;
  unsigned long long size;
};

extern struct common_node* __f95_common_head; /* this image's own list */

static struct common_node** program_list_head(void) {
  FARPROC head = GetProcAddress(GetModuleHandleW(NULL), "__f95_common_head");
  return (struct common_node**)(void*)head;
}

static struct common_node* own_last_node;

void __f95_join_common_list(void) {
  struct common_node** link = program_list_head();
  if (link == NULL || link == &__f95_common_head || __f95_common_head == NULL) return;
  while (*link != NULL) link = &(*link)->next;
  *link = __f95_common_head;
  own_last_node = __f95_common_head;
  while (own_last_node->next != NULL) own_last_node = own_last_node->next;
}

void __f95_leave_common_list(void) {
  struct common_node** link = program_list_head();
  if (link == NULL || own_last_node == NULL) return;
  while (*link != NULL && *link != __f95_common_head) link = &(*link)->next;
  if (*link != NULL) *link = own_last_node->next;
  own_last_node->next = NULL;
  own_last_node = NULL;
}
