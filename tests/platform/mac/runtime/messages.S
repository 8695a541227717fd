// Sending a message: finds what it runs and goes on there with all arguments untouched, so that it
// returns to the sender. For x86_64, by the calling convention of System V.
//
//   objc_msgSend          receiver in rdi, selector in rsi
//   objc_msgSend_stret    the same one register later: rdi holds where the result goes
//   objc_msgSendSuper2    rdi points to the receiver and the class that the sender belongs to

        .text

// Calls \finder with what is in \first and \second; its answer is left in r11.
.macro FIND finder, first, second
        pushq   %rbp
        .cfi_def_cfa_offset 16
        .cfi_offset %rbp, -16
        movq    %rsp, %rbp
        .cfi_def_cfa_register %rbp
        subq    $192, %rsp
        movq    %rdi, -8(%rbp)
        movq    %rsi, -16(%rbp)
        movq    %rdx, -24(%rbp)
        movq    %rcx, -32(%rbp)
        movq    %r8, -40(%rbp)
        movq    %r9, -48(%rbp)
        movq    %rax, -56(%rbp)
        movups  %xmm0, -80(%rbp)
        movups  %xmm1, -96(%rbp)
        movups  %xmm2, -112(%rbp)
        movups  %xmm3, -128(%rbp)
        movups  %xmm4, -144(%rbp)
        movups  %xmm5, -160(%rbp)
        movups  %xmm6, -176(%rbp)
        movups  %xmm7, -192(%rbp)
        movq    \first, %rdi
        movq    \second, %rsi
        call    \finder
        movq    %rax, %r11
        movups  -192(%rbp), %xmm7
        movups  -176(%rbp), %xmm6
        movups  -160(%rbp), %xmm5
        movups  -144(%rbp), %xmm4
        movups  -128(%rbp), %xmm3
        movups  -112(%rbp), %xmm2
        movups  -96(%rbp), %xmm1
        movups  -80(%rbp), %xmm0
        movq    -56(%rbp), %rax
        movq    -48(%rbp), %r9
        movq    -40(%rbp), %r8
        movq    -32(%rbp), %rcx
        movq    -24(%rbp), %rdx
        movq    -16(%rbp), %rsi
        movq    -8(%rbp), %rdi
        movq    %rbp, %rsp
        popq    %rbp
        .cfi_def_cfa %rsp, 8
.endm

.macro FUNCTION name
        .globl  \name
        .type   \name, @function
\name:
        .cfi_startproc
.endm

.macro END name
        .cfi_endproc
        .size   \name, . - \name
.endm

FUNCTION objc_msgSend
        testq   %rdi, %rdi
        je      1f
        FIND    standinLookUp, %rdi, %rsi
        jmp     *%r11
1:      // To nil: zero of every kind.
        xorl    %eax, %eax
        xorl    %edx, %edx
        xorps   %xmm0, %xmm0
        xorps   %xmm1, %xmm1
        ret
END objc_msgSend

FUNCTION objc_msgSend_stret
        testq   %rsi, %rsi
        je      1f
        FIND    standinLookUp, %rsi, %rdx
        jmp     *%r11
1:      movq    %rdi, %rax
        ret
END objc_msgSend_stret

FUNCTION objc_msgSendSuper2
        movq    8(%rdi), %r10
        movq    (%rdi), %rdi
        FIND    standinLookUpSuper, %r10, %rsi
        jmp     *%r11
END objc_msgSendSuper2

        .section .note.GNU-stack,"",@progbits
