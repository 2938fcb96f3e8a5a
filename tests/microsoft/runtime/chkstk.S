// Functions with a large stack frame call this with the frame's size in rax. It touches each page of the frame, in order,
// because the system only extends a stack page by page. It changes no register.
    .globl __chkstk
    .text
__chkstk:
    pushq %rcx
    pushq %rax
    cmpq $4096, %rax
    leaq 24(%rsp), %rcx
    jb 2f
1:  subq $4096, %rcx
    testq %rcx, (%rcx)
    subq $4096, %rax
    cmpq $4096, %rax
    ja 1b
2:  subq %rax, %rcx
    testq %rcx, (%rcx)
    popq %rax
    popq %rcx
    retq
