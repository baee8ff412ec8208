/* Routines written in assembler: the stack probe of large frames, and the two routines
   the debugger finds by name in the routine map and calls on a stopped thread
   ("__get_common_info", a leaf that returns the head of the run-time COMMON list in RAX,
   and "exit"). Each starts with a prologue the debugger's stack walk recognises. */

__asm__(
    "\t.intel_syntax noprefix\n"
    "\t.text\n"
    /* RAX = bytes to allocate. Touches every new page from the top down (the guard page
       grows the stack one page at a time), then lowers RSP by RAX and returns as if the
       caller had executed sub rsp, RAX. Only RAX, R10 and R11 change. */
    "\t.globl __f95_probe\n"
    "__f95_probe:\n"
    "\tpop r11\n"
    "\tmov r10, rsp\n"
    "\tsub r10, rax\n"
    "\tmov rax, rsp\n"
    "1:\tsub rax, 4096\n"
    "\tcmp rax, r10\n"
    "\tjb 2f\n"
    "\ttest byte ptr [rax], 0\n"
    "\tjmp 1b\n"
    "2:\tmov rsp, r10\n"
    "\ttest byte ptr [rsp], 0\n"
    "\tjmp r11\n"
    "\t.globl __get_common_info\n"
    "\t.globl __get_common_info_last\n"
    "__get_common_info:\n"
    "\tsub rsp, 8\n"
    "\tmov rax, qword ptr [rip+__f95_common_head]\n"
    "\tadd rsp, 8\n"
    "__get_common_info_last:\n"
    "\tret\n"
    "\t.globl __f95_exit\n"
    "\t.globl __f95_exit_last\n"
    "__f95_exit:\n"
    "\tsub rsp, 40\n"
    "\tand rsp, -16\n"
    "\txor ecx, ecx\n"
    "\tcall exit\n"
    "\tadd rsp, 40\n"
    "__f95_exit_last:\n"
    "\tret\n"
    "\t.data\n"
    "\t.p2align 3\n"
    "\t.globl __f95_probe_ptr\n"
    "__f95_probe_ptr:\n"
    "\t.quad __f95_probe\n"
    "\t.text\n"
    "\t.att_syntax\n");
